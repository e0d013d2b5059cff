#pragma once

#include "sheet/streamCoding.h"

#include <memory>

namespace vignar
{

struct CodedPicture;
class PictureIndex;

/// What is shown of a coded picture.
enum class PictureKind {
    /// An intra picture, whole.
    intra,
    other,
    /// Intra in parts, as of two fields; something that was coded earlier; or unreadable.
    unclear
};

/// Reads the beginnings of pictures, which tell their kind, as far as a decoder would call it.
class PictureKinds
{
public:
    static std::unique_ptr<PictureKinds> of(const StreamCoding &coding);

    virtual ~PictureKinds() = default;
    Q_DISABLE_COPY_MOVE(PictureKinds)

    /// True when it has to be asked for every picture from a sync picture on, in decoding
    /// order: what is shown may have been coded earlier.
    virtual bool remembers() const { return false; }

    virtual PictureKind kindOf(PictureIndex &index, const CodedPicture &picture) = 0;

protected:
    PictureKinds() = default;
};

/// For H.264 and HEVC.
std::unique_ptr<PictureKinds> unitKinds(const StreamCoding &coding);
/// For VP8, VP9 and AV1.
std::unique_ptr<PictureKinds> webKinds(const StreamCoding &coding);

} // namespace vignar
