#include "sheet/matroskaIndex.h"

#include "sheet/ebml.h"
#include "sheet/matroskaIds.h"

#include <algorithm>
#include <array>

namespace vignar
{

namespace Ids = MatroskaIds;

namespace
{

constexpr quint64 pictureTrack = 1;
/// Nanoseconds; hardly any writer takes another tick.
constexpr quint64 millisecond = 1'000'000;

constexpr qint64 largestHead = 4 * 1024 * 1024;
constexpr qint64 largestCues = 64 * 1024 * 1024;
/// Each entry takes a look at another place.
constexpr qint64 largestSeekHead = 16 * 1024;
/// Elements on the way to the first Cluster.
constexpr int longestHead = 100;
/// ffmpeg thins out an index of more than 43,690 entries (max_index_size).
constexpr size_t mostCues = 40'000;

bool isOne(QByteArrayView real)
{
    constexpr std::array<char, 4> single{0x3F, char(0x80), 0, 0};
    constexpr std::array<char, 8> twice{0x3F, char(0xF0), 0, 0, 0, 0, 0, 0};
    return real == QByteArrayView(single) || real == QByteArrayView(twice);
}

std::optional<StreamCoding> codingOf(QByteArrayView codec, QByteArrayView configuration)
{
    // Both begin with their version.
    const bool isConfigured = configuration.startsWith('\1');
    if (isText(codec, "V_MPEG4/ISO/AVC") && isConfigured)
        return avcCoding(configuration);
    if (isText(codec, "V_MPEGH/ISO/HEVC") && isConfigured)
        return hevcCoding(configuration);
    if (isText(codec, "V_AV1"))
        return av1Coding(configuration);
    if (isText(codec, "V_VP8"))
        return StreamCoding{PictureCoding::vp8};
    if (isText(codec, "V_VP9"))
        return StreamCoding{PictureCoding::vp9};
    return std::nullopt;
}

} // namespace

std::unique_ptr<PictureIndex> MatroskaIndex::read(std::unique_ptr<QFile> file)
{
    std::unique_ptr<MatroskaIndex> index(new MatroskaIndex(std::move(file)));
    return index->readSegment() ? std::move(index) : nullptr;
}

template <class Like>
bool MatroskaIndex::allIn(const FileElement &element, qint64 limit, const Like &like)
{
    const qint64 size = element.end - element.begin;
    if (size > limit)
        return false;
    const QByteArray content = bytesAt(element.begin, size);
    return content.size() == size && allElements(content, like);
}

bool MatroskaIndex::readSegment()
{
    m_ticksASecond = 1000;
    const qint64 fileSize = m_file->size();
    const auto header = elementAt(*this, 0, fileSize);
    bool isMatroska = false;
    if (!header || header->id != Ids::ebml ||
        !allIn(*header, largestHead, [&](const ElementView &piece) {
            isMatroska |= piece.id == Ids::docType &&
                          (isText(piece.content, "matroska") || isText(piece.content, "webm"));
            return true;
        }))
        return false;
    const auto segment = elementHead(bytesAt(header->end, longestElementHead));
    if (!isMatroska || !segment || segment->id != Ids::segment)
        return false;
    m_layout.begin = header->end + segment->length;
    m_layout.end = fileSize;
    // What is cut short has no cues at its end, and what follows is of no Segment.
    return (segment->size.isUnknown ||
            segment->size.value == quint64(m_layout.end - m_layout.begin)) &&
           readHead() && readCues();
}

bool MatroskaIndex::readHead()
{
    qint64 position = m_layout.begin;
    for (int left = longestHead; left > 0; --left) {
        const auto part = elementAt(*this, position, m_layout.end);
        if (!part)
            return false;
        if (part->id == Ids::cluster)
            return m_layout.track != 0;
        if (!readPart(*part))
            return false;
        position = part->end;
    }
    return false;
}

bool MatroskaIndex::readPart(const FileElement &part)
{
    switch (part.id) {
    case Ids::seekHead:
        return allIn(part, largestSeekHead, [this](const ElementView &piece) {
            return piece.id != Ids::seek || readSeek(piece.content);
        });
    case Ids::info:
        return allIn(part, largestHead, [](const ElementView &piece) {
            return piece.id != Ids::timestampScale || numberIn(piece.content) == millisecond;
        });
    case Ids::tracks:
        return m_layout.track == 0 && allIn(part, largestHead, [this](const ElementView &piece) {
                   return piece.id != Ids::track || readTrack(piece.content);
               });
    case Ids::cues:
        m_cuesAt = part.position;
        return true;
    default:
        return isBetweenClusters(part.id);
    }
}

/// ffmpeg gives up the cues when any of these leads astray.
bool MatroskaIndex::readSeek(QByteArrayView seek)
{
    quint64 id = 0;
    quint64 position = 0;
    const bool isWhole = allElements(seek, [&](const ElementView &piece) {
        if (piece.id == Ids::seekId)
            id = numberIn(piece.content);
        else if (piece.id == Ids::seekPosition)
            position = numberIn(piece.content);
        return true;
    });
    if (!isWhole || position > quint64(m_layout.end - m_layout.begin))
        return false;
    const auto target = elementAt(*this, m_layout.begin + qint64(position), m_layout.end);
    if (target && target->id == Ids::cues)
        m_cuesAt = target->position;
    return target && target->id == id;
}

bool MatroskaIndex::readTrack(QByteArrayView track)
{
    quint64 type = 0;
    quint64 number = 0;
    QByteArrayView codec;
    QByteArrayView configuration;
    bool isPlain = true;
    const bool isWhole = allElements(track, [&](const ElementView &piece) {
        if (piece.id == Ids::trackType)
            type = numberIn(piece.content);
        else if (piece.id == Ids::trackNumber)
            number = numberIn(piece.content);
        else if (piece.id == Ids::codec)
            codec = piece.content;
        else if (piece.id == Ids::codecPrivate)
            configuration = piece.content;
        else if (piece.id == Ids::codecDelay || piece.id == Ids::seekPreRoll)
            isPlain = isPlain && numberIn(piece.content) == 0;
        else if (piece.id == Ids::trackTimestampScale)
            isPlain = isPlain && isOne(piece.content);
        else if (piece.id == Ids::trackOperation || piece.id == Ids::contentEncodings)
            isPlain = false;
        return true;
    });
    if (!isWhole || type != pictureTrack)
        return isWhole;
    if (m_layout.track != 0 || number == 0 || !isPlain)
        return false;
    m_layout.track = number;
    m_coding = codingOf(codec, configuration);
    return m_coding.has_value();
}

bool MatroskaIndex::readCues()
{
    const auto cues = elementAt(*this, m_cuesAt, m_layout.end);
    return cues && cues->id == Ids::cues &&
           allIn(*cues, largestCues,
                 [this](const ElementView &piece) {
                     return piece.id != Ids::cuePoint || readCuePoint(piece.content);
                 }) &&
           !m_layout.cues.empty();
}

bool MatroskaIndex::readCuePoint(QByteArrayView point)
{
    quint64 time = 0;
    std::optional<quint64> begin;
    const bool isWhole = allElements(point, [&](const ElementView &piece) {
        if (piece.id == Ids::cueTime)
            time = numberIn(piece.content);
        if (piece.id != Ids::cuePositions)
            return true;
        quint64 track = 0;
        quint64 cluster = 0;
        const bool isRead = allElements(piece.content, [&](const ElementView &position) {
            if (position.id == Ids::cueTrack)
                track = numberIn(position.content);
            else if (position.id == Ids::cueCluster)
                cluster = numberIn(position.content);
            return true;
        });
        if (track != m_layout.track)
            return isRead;
        const bool isFirst = !begin;
        begin = cluster;
        return isRead && isFirst;
    });
    if (!isWhole || !begin)
        return isWhole;
    if (time > latestMatroskaTime || *begin > quint64(m_layout.end - m_layout.begin))
        return false;
    const MatroskaCue cue{.time = qint64(time), .cluster = m_layout.begin + qint64(*begin)};
    auto &cues = m_layout.cues;
    if (!cues.empty() && (cue.time <= cues.back().time || cue.cluster < cues.back().cluster))
        return false;
    cues.push_back(cue);
    return cues.size() <= mostCues;
}

bool MatroskaIndex::visitFrom(qint64 tick, const std::function<bool(const CodedPicture &)> &visit)
{
    const auto &cues = m_layout.cues;
    const auto after = std::ranges::upper_bound(cues, tick, {}, &MatroskaCue::time);
    return after != cues.begin() && MatroskaWalk(*this, m_layout, visit).run(*std::prev(after));
}

} // namespace vignar
