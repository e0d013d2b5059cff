#pragma once

#include "sheet/matroskaWalk.h"

namespace vignar
{

/// The cues of a Matroska or WebM file (RFC 9559; EBML: RFC 8794) with one picture track. The
/// pictures themselves are told by the heads of the blocks, which are read when they are visited.
class MatroskaIndex final : public PictureIndex
{
public:
    /// Null for everything else; also where ffmpeg would not use the cues.
    static std::unique_ptr<PictureIndex> read(std::unique_ptr<QFile> file);

    bool visitFrom(qint64 tick, const std::function<bool(const CodedPicture &)> &visit) override;
    bool seeksAnywhere() const override { return false; }

private:
    using PictureIndex::PictureIndex;

    /// Reads an element of so many bytes at most and hands over those in it; false when they are
    /// broken or one is not liked.
    template <class Like>
    bool allIn(const FileElement &element, qint64 limit, const Like &like);

    bool readSegment();
    bool readHead();
    bool readPart(const FileElement &part);
    bool readSeek(QByteArrayView seek);
    bool readTrack(QByteArrayView track);
    bool readCues();
    bool readCuePoint(QByteArrayView point);

    qint64 m_cuesAt = 0;
    MatroskaLayout m_layout;
};

} // namespace vignar
