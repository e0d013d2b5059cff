#pragma once

#include "sheet/fastPasses.h"
#include "sheet/passParts.h"
#include "sheet/pictureIndex.h"

#include <optional>

namespace vignar
{

/// What a pass of an intra picture can be read by instead.
struct QuickForm {
    enum class Kind {
        /// None is quicker than the forms that come after this.
        none,
        /// None finds a picture.
        without,
        input
    };

    Kind kind = Kind::none;
    /// Options of the input and the input.
    QStringList input;
    /// When the picture is shown (seconds into the source), where this is known.
    std::optional<double> time;
};

/// Finds the quick forms of the passes of one source. Reads in the source.
class QuickForms
{
public:
    QuickForms(const PassMap &passes, const SourceDico &source);

    /// Of a pass that selects intra pictures.
    QuickForm formOf(const PassParts &pass);

    /// Seconds from the sync picture before the instant of a pass to it, where they are told.
    std::optional<double> runUpOf(const PassParts &pass);

    /// True when there is no doubt which stream ffmpeg takes by itself: the first.
    bool isStreamSure() const { return m_isStreamSure; }

private:
    bool canBeExcerpt(const PassParts &pass) const;
    QStringList skippingInput(const PassParts &pass) const;
    QStringList lonePictureInput(const PassParts &pass, const CodedPicture &picture) const;
    QuickForm untoldForm(const PassParts &pass) const;
    QStringList intraOnly() const;

    const SourceDico &m_source;
    bool m_isToldByItsHeader = false;
    bool m_hasAvc = false;
    bool m_isHevc = false;
    bool m_areClose = false;
    std::unique_ptr<PictureIndex> m_index;
    bool m_isStreamSure = false;
};

} // namespace vignar
