#include "sheet/matroskaWalk.h"

#include "sheet/ebml.h"
#include "sheet/matroskaIds.h"

#include <QtEndian>

#include <algorithm>
#include <array>

namespace vignar
{

namespace Ids = MatroskaIds;

namespace
{

/// With what stands before the frame of a Block, 11 bytes at most.
constexpr qint64 headBytes = longestElementHead + 11;
/// Elements that one walk looks at; a second takes up to 500.
constexpr int longestWalk = 50'000;

/// ffmpeg takes an index of fewer for none.
constexpr size_t fewestCues = 2;

template <size_t count>
bool isAmong(const std::array<quint32, count> &ids, quint32 id)
{
    return std::ranges::find(ids, id) != ids.end();
}

bool isBesideBlocks(quint32 id)
{
    constexpr std::array ids{Ids::nothing, Ids::checksum, Ids::clusterPosition, Ids::previousSize};
    return isAmong(ids, id);
}

} // namespace

std::optional<FileElement> elementAt(PictureIndex &file, qint64 position, qint64 limit)
{
    const QByteArray bytes = file.bytesAt(position, std::min(headBytes, limit - position));
    const auto head = elementHead(bytes);
    const qint64 begin = position + (head ? head->length : 0);
    if (!head || head->size.isUnknown || head->size.value > quint64(limit - begin))
        return std::nullopt;
    const auto size = qint64(head->size.value);
    return FileElement{head->id, position, begin, begin + size, bytes.mid(head->length, size)};
}

bool isBetweenClusters(quint32 id)
{
    constexpr std::array ids{Ids::nothing,  Ids::checksum, Ids::seekHead,
                             Ids::info,     Ids::tracks,   Ids::cues,
                             Ids::chapters, Ids::tags,     Ids::attachments};
    return isAmong(ids, id);
}

struct MatroskaWalk::Block {
    quint64 track = 0;
    /// Its frame.
    qint64 begin = 0;
    qint64 end = 0;
    /// Counted from the time of the Cluster.
    qint64 time = 0;
    bool isLaced = false;
    /// Of a SimpleBlock; of another its group tells.
    bool isKey = false;

    static std::optional<Block> of(const FileElement &element);
};

std::optional<MatroskaWalk::Block> MatroskaWalk::Block::of(const FileElement &element)
{
    const auto track = codedNumber(element.beginning);
    if (!track || element.beginning.size() < track->length + 3)
        return std::nullopt;
    const char *rest = element.beginning.constData() + track->length;
    const auto flags = quint8(rest[2]);
    return Block{.track = track->value,
                 .begin = element.begin + track->length + 3,
                 .end = element.end,
                 .time = qFromBigEndian<qint16>(rest),
                 .isLaced = (flags & 0x06) != 0,
                 .isKey = (flags & 0x80) != 0};
}

bool MatroskaWalk::run(const MatroskaCue &from)
{
    m_from = from.time;
    qint64 position = from.cluster;
    while (position < m_layout.end && !m_isOver) {
        const auto element = next(position, m_layout.end);
        if (!element)
            return false;
        const bool isFine =
            element->id == Ids::cluster ? visitCluster(*element) : isBetweenClusters(element->id);
        // The first Cluster has to have the picture of the cue.
        if (!isFine || !m_hasBegun)
            return false;
        position = element->end;
    }
    return m_hasBegun;
}

std::optional<FileElement> MatroskaWalk::next(qint64 position, qint64 limit)
{
    return ++m_elements <= longestWalk ? elementAt(m_file, position, limit) : std::nullopt;
}

bool MatroskaWalk::visitCluster(const FileElement &cluster)
{
    m_cluster = cluster.position;
    m_time.reset();
    m_latestOther = -1;
    m_isInterleaved = true;
    qint64 position = cluster.begin;
    while (position < cluster.end && !m_isOver) {
        const auto element = next(position, cluster.end);
        if (!element || !visitElement(*element))
            return false;
        position = element->end;
    }
    return true;
}

bool MatroskaWalk::visitElement(const FileElement &element)
{
    if (element.id == Ids::simpleBlock) {
        const auto block = Block::of(element);
        return block && visitBlock(*block);
    }
    if (element.id == Ids::blockGroup)
        return visitGroup(element);
    return element.id == Ids::timestamp ? visitTime(element) : isBesideBlocks(element.id);
}

bool MatroskaWalk::visitTime(const FileElement &timestamp)
{
    const bool isWhole = timestamp.beginning.size() == timestamp.end - timestamp.begin;
    const quint64 time = numberIn(timestamp.beginning);
    if (m_time || !isWhole || time > latestMatroskaTime)
        return false;
    m_time = qint64(time);
    return true;
}

bool MatroskaWalk::visitGroup(const FileElement &group)
{
    std::optional<Block> block;
    bool isKey = true;
    for (qint64 position = group.begin; position < group.end;) {
        const auto element = next(position, group.end);
        if (!element || (block && element->id == Ids::block))
            return false;
        if (element->id == Ids::block)
            block = Block::of(*element);
        else if (element->id == Ids::referenceBlock)
            isKey = false;
        position = element->end;
    }
    if (!block)
        return false;
    block->isKey = isKey;
    return visitBlock(*block);
}

bool MatroskaWalk::visitBlock(const Block &block)
{
    if (!m_time)
        return false;
    const qint64 shownAt = *m_time + block.time;
    if (block.track != m_layout.track) {
        m_latestOther = std::max(m_latestOther, shownAt);
        return true;
    }
    if (block.isLaced || block.begin == block.end || shownAt < 0 ||
        (block.isKey && shownAt <= m_lastKey))
        return false;
    if (block.isKey) {
        m_lastKey = shownAt;
        // ffmpeg takes a seek for ended at anything that is shown at the time sought or later,
        // sound included, and hands over the next key picture whatever its time; and an excerpt
        // ends at whatever comes after its end.
        m_isInterleaved = m_isInterleaved && m_latestOther <= shownAt;
    }
    if (!m_hasBegun && (!block.isKey || shownAt < m_from))
        return true;
    if (!m_hasBegun && shownAt != m_from)
        return false;
    m_hasBegun = true;
    m_isOver = !m_visit({.shownAt = shownAt,
                         .soughtAt = shownAt,
                         .position = block.begin,
                         .size = block.end - block.begin,
                         .isSync = block.isKey && m_isInterleaved && hasCue(shownAt)});
    return true;
}

/// One that tells of the Cluster.
bool MatroskaWalk::hasCue(qint64 time) const
{
    const auto &cues = m_layout.cues;
    const auto cue = std::ranges::lower_bound(cues, time, {}, &MatroskaCue::time);
    return cues.size() >= fewestCues && cue != cues.end() && cue->time == time &&
           cue->cluster == m_cluster;
}

} // namespace vignar
