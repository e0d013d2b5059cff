#pragma once

#include "sheet/pictureIndex.h"

#include <optional>
#include <vector>

namespace vignar
{

/// An element of a file.
struct FileElement {
    quint32 id = 0;
    qint64 position = 0;
    /// Of the content.
    qint64 begin = 0;
    qint64 end = 0;
    /// First bytes of the content, enough of a Block for what stands before its frame.
    QByteArray beginning;
};

/// The element that begins at a byte of a file and ends before another or at it; nothing where
/// there is none, and for one whose size is not told.
std::optional<FileElement> elementAt(PictureIndex &file, qint64 position, qint64 limit);

/// True for what may stand between the Clusters of a Matroska file.
bool isBetweenClusters(quint32 id);

/// Ticks: ffmpeg gives up an index that goes on for longer.
constexpr quint64 latestMatroskaTime = 100'000'000;

/// A key picture that ffmpeg's reader can be told to begin at.
struct MatroskaCue {
    qint64 time = 0;
    /// Where its Cluster begins in the file.
    qint64 cluster = 0;
};

/// The content of a Matroska file as far as it is needed to find the pictures of a track.
struct MatroskaLayout {
    /// Of the content of the Segment, bytes of the file.
    qint64 begin = 0;
    qint64 end = 0;
    /// Its number.
    quint64 track = 0;
    /// In the order of their times and of their Clusters.
    std::vector<MatroskaCue> cues;
};

/// A way through the Blocks of a file, from a cue on.
class MatroskaWalk
{
public:
    using Visit = std::function<bool(const CodedPicture &)>;

    MatroskaWalk(PictureIndex &file, const MatroskaLayout &layout, const Visit &visit)
        : m_file(file), m_layout(layout), m_visit(visit)
    {
    }

    /// Hands over the pictures from that of the cue on until visit returns false or the file
    /// ends. False when the cue does not tell the truth or something is broken.
    bool run(const MatroskaCue &from);

private:
    struct Block;

    /// Null also when the walk takes too long.
    std::optional<FileElement> next(qint64 position, qint64 limit);
    bool visitCluster(const FileElement &cluster);
    bool visitElement(const FileElement &element);
    bool visitTime(const FileElement &timestamp);
    bool visitGroup(const FileElement &group);
    bool visitBlock(const Block &block);
    bool hasCue(qint64 time) const;

    PictureIndex &m_file;
    const MatroskaLayout &m_layout;
    const Visit &m_visit;
    qint64 m_from = 0;
    int m_elements = 0;
    bool m_hasBegun = false;
    bool m_isOver = false;
    qint64 m_lastKey = -1;
    // Of the Cluster: its place and time, the latest time of another track so far, and whether
    // that was in time at each key picture.
    qint64 m_cluster = 0;
    std::optional<qint64> m_time;
    qint64 m_latestOther = -1;
    bool m_isInterleaved = true;
};

} // namespace vignar
