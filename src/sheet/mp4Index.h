#pragma once

#include "sheet/pictureIndex.h"

#include <limits>
#include <vector>

namespace vignar
{

/// The sample tables of an MP4 or QuickTime file (ISO/IEC 14496-12, 14496-15) with one picture
/// track, in one piece, of H.264, HEVC, VP8, VP9, AV1 or ProRes.
class Mp4Index final : public PictureIndex
{
public:
    /// Null for everything else, fragmented files and several edits among it.
    static std::unique_ptr<PictureIndex> read(std::unique_ptr<QFile> file);

    bool visitFrom(qint64 tick, const std::function<bool(const CodedPicture &)> &visit) override;
    bool seeksAnywhere() const override { return true; }

private:
    using PictureIndex::PictureIndex;

    bool readMovie(QByteArrayView movie);
    bool readTrack(QByteArrayView track, quint32 movieTicks);
    bool readEntry(QByteArrayView sampleTable);
    bool readSizes(QByteArrayView sampleTable);
    bool readPlaces(QByteArrayView sampleTable);
    bool readTimes(QByteArrayView sampleTable);
    bool readSyncs(QByteArrayView sampleTable);
    bool applyEdit(QByteArrayView track, quint32 movieTicks);

    /// In decoding order.
    std::vector<CodedPicture> m_pictures;
    /// Numbers of the sync pictures.
    std::vector<size_t> m_syncs;
    /// Pictures from this tick on may be cut off by the edit.
    qint64 m_end = std::numeric_limits<qint64>::max();
};

} // namespace vignar
