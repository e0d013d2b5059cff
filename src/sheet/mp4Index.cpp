#include "sheet/mp4Index.h"

#include <QtEndian>

#include <algorithm>
#include <limits>
#include <optional>
#include <span>

namespace vignar
{

namespace
{

/// A day of pictures has tables of this size.
constexpr qint64 largestMovieBox = 256 * 1024 * 1024;
constexpr size_t mostPictures = 24 * 3600 * 60;
/// In front of the movie box.
constexpr int mostBoxes = 10'000;
/// Far from where sums overflow.
constexpr qint64 largestPosition = qint64(1) << 60;
/// Above it a microsecond, ffmpeg's own unit, is coarser than the ticks.
constexpr qint64 finestTicks = 250'000;
/// Pictures among which the first one shown is: H.264 moves a picture by at most 16 places.
constexpr size_t longestReordering = 17;

template <class Number>
Number numberAt(QByteArrayView bytes, qsizetype offset)
{
    if (offset < 0 || offset + qsizetype(sizeof(Number)) > bytes.size())
        return 0;
    return qFromBigEndian<Number>(bytes.data() + offset);
}

QByteArrayView from(QByteArrayView bytes, qsizetype offset)
{
    return bytes.sliced(std::min(offset, bytes.size()));
}

struct Box {
    QByteArrayView type;
    QByteArrayView content;
};

/// The next box of some bytes, which are shortened by it.
std::optional<Box> takeBox(QByteArrayView &bytes)
{
    if (bytes.size() < 8)
        return std::nullopt;
    quint64 size = numberAt<quint32>(bytes, 0);
    const qsizetype header = size == 1 ? 16 : 8;
    if (size == 1)
        size = numberAt<quint64>(bytes, 8);
    else if (size == 0)
        size = quint64(bytes.size());
    if (size < quint64(header) || size > quint64(bytes.size()))
        return std::nullopt;
    const Box box{bytes.sliced(4, 4), bytes.sliced(header, qsizetype(size) - header)};
    bytes = bytes.sliced(qsizetype(size));
    return box;
}

std::vector<QByteArrayView> boxes(QByteArrayView bytes, QByteArrayView type)
{
    std::vector<QByteArrayView> found;
    while (const auto box = takeBox(bytes)) {
        if (box->type == type)
            found.push_back(box->content);
    }
    return found;
}

/// The first of a path of boxes, each in the one before it; null when one is missing.
QByteArrayView boxAt(QByteArrayView bytes, std::initializer_list<const char *> path)
{
    for (const char *type : path) {
        const auto found = boxes(bytes, type);
        if (found.empty())
            return {};
        bytes = found.front();
    }
    return bytes;
}

/// A box with a count and so many entries of a few numbers of 32 bits each.
class Table
{
public:
    /// The count stands behind so many bytes.
    Table(QByteArrayView box, int columns, qsizetype countOffset = 4)
        : m_rows(from(box, countOffset + 4)),
          m_columns(columns),
          m_count(numberAt<quint32>(box, countOffset)),
          m_isWhole(!box.isNull() && m_rows.size() / (4 * columns) >= qsizetype(m_count))
    {
    }

    bool isWhole() const { return m_isWhole; }
    size_t count() const { return m_count; }
    quint32 at(size_t row, int column) const
    {
        return numberAt<quint32>(m_rows, 4 * (qsizetype(row) * m_columns + column));
    }

private:
    QByteArrayView m_rows;
    int m_columns;
    quint32 m_count;
    bool m_isWhole;
};

/// The movie box, wherever it is in the file; empty when it is missing or too large.
QByteArray movieBox(QFile &file)
{
    qint64 position = 0;
    for (int left = mostBoxes; left > 0 && file.seek(position); --left) {
        const QByteArray header = file.read(16);
        qint64 size = numberAt<quint32>(header, 0);
        const qint64 headerSize = size == 1 ? 16 : 8;
        if (size == 1)
            size = numberAt<qint64>(header, 8);
        if (header.size() < 16 || size < headerSize || size > file.size() - position)
            return {};
        if (QByteArrayView(header).sliced(4, 4) == "moov") {
            return size <= largestMovieBox && file.seek(position + headerSize)
                       ? file.read(size - headerSize)
                       : QByteArray();
        }
        position += size;
    }
    return {};
}

/// Ticks a second, from the header of a movie or of a track.
quint32 ticks(QByteArrayView header)
{
    return numberAt<quint32>(header, numberAt<quint8>(header, 0) == 1 ? 20 : 12);
}

std::optional<StreamCoding> codingOf(QByteArrayView type, QByteArrayView boxes)
{
    if (type == "avc1")
        return avcCoding(boxAt(boxes, {"avcC"}));
    if (type == "hvc1" || type == "hev1")
        return hevcCoding(boxAt(boxes, {"hvcC"}));
    if (type == "av01")
        return av1Coding(boxAt(boxes, {"av1C"}));
    if (type == "vp08" || type == "vp09")
        return StreamCoding{type == "vp08" ? PictureCoding::vp8 : PictureCoding::vp9};
    // ProRes.
    for (const char *intra : {"apch", "apcn", "apcs", "apco", "ap4h", "ap4x"}) {
        if (type == intra)
            return StreamCoding{PictureCoding::intraOnly};
    }
    return std::nullopt;
}

} // namespace

std::unique_ptr<PictureIndex> Mp4Index::read(std::unique_ptr<QFile> file)
{
    const QByteArray movie = movieBox(*file);
    std::unique_ptr<Mp4Index> index(new Mp4Index(std::move(file)));
    return index->readMovie(movie) ? std::move(index) : nullptr;
}

bool Mp4Index::readMovie(QByteArrayView movie)
{
    if (!boxes(movie, "mvex").empty())
        return false;
    QByteArrayView pictures;
    for (const QByteArrayView track : boxes(movie, "trak")) {
        if (from(boxAt(track, {"mdia", "hdlr"}), 8).startsWith("vide")) {
            if (!pictures.isNull())
                return false;
            pictures = track;
        }
    }
    return readTrack(pictures, ticks(boxAt(movie, {"mvhd"})));
}

bool Mp4Index::readTrack(QByteArrayView track, quint32 movieTicks)
{
    m_ticksASecond = ticks(boxAt(track, {"mdia", "mdhd"}));
    const QByteArrayView sampleTable = boxAt(track, {"mdia", "minf", "stbl"});
    return m_ticksASecond > 0 && m_ticksASecond <= finestTicks && readEntry(sampleTable) &&
           readSizes(sampleTable) && readPlaces(sampleTable) && readTimes(sampleTable) &&
           applyEdit(track, movieTicks) && readSyncs(sampleTable);
}

bool Mp4Index::readEntry(QByteArrayView sampleTable)
{
    const QByteArrayView description = boxAt(sampleTable, {"stsd"});
    QByteArrayView entries = from(description, 8);
    const auto entry = takeBox(entries);
    if (numberAt<quint32>(description, 4) != 1 || !entry)
        return false;
    // The fields of a picture track's entry take 78 bytes; boxes follow.
    m_coding = codingOf(entry->type, from(entry->content, 78));
    return m_coding.has_value();
}

bool Mp4Index::readSizes(QByteArrayView sampleTable)
{
    const QByteArrayView box = boxAt(sampleTable, {"stsz"});
    const Table sizes(box, 1, 8);
    // One size for all is for sound.
    if (numberAt<quint32>(box, 4) != 0 || !sizes.isWhole() || sizes.count() > mostPictures)
        return false;
    m_pictures.resize(sizes.count());
    for (size_t number = 0; number < sizes.count(); ++number)
        m_pictures[number].size = sizes.at(number, 0);
    return !m_pictures.empty();
}

bool Mp4Index::readPlaces(QByteArrayView sampleTable)
{
    const QByteArrayView wide = boxAt(sampleTable, {"co64"});
    const Table chunks(wide.isNull() ? boxAt(sampleTable, {"stco"}) : wide, wide.isNull() ? 1 : 2);
    const Table runs(boxAt(sampleTable, {"stsc"}), 3);
    if (!chunks.isWhole() || !runs.isWhole())
        return false;
    size_t number = 0;
    for (size_t run = 0; run < runs.count(); ++run) {
        // Chunks count from 1. A second description would be a second kind of picture.
        const size_t first = runs.at(run, 0);
        const size_t end = run + 1 < runs.count() ? runs.at(run + 1, 0) : chunks.count() + 1;
        if (first < 1 || first > end || end > chunks.count() + 1 || runs.at(run, 2) != 1)
            return false;
        for (size_t chunk = first; chunk < end; ++chunk) {
            qint64 position = chunks.at(chunk - 1, 0);
            if (!wide.isNull())
                position = position << 32 | chunks.at(chunk - 1, 1);
            if (position < 0 || position > largestPosition)
                return false;
            for (size_t left = runs.at(run, 1); left > 0 && number < m_pictures.size(); --left) {
                m_pictures[number].position = position;
                position += m_pictures[number++].size;
            }
        }
    }
    return number == m_pictures.size();
}

bool Mp4Index::readTimes(QByteArrayView sampleTable)
{
    const Table durations(boxAt(sampleTable, {"stts"}), 2);
    size_t number = 0;
    qint64 decodedAt = 0;
    for (size_t row = 0; durations.isWhole() && row < durations.count(); ++row) {
        // Larger ones are meant to be below zero.
        if (durations.at(row, 1) > quint32(std::numeric_limits<qint32>::max()))
            return false;
        for (size_t left = durations.at(row, 0); left > 0 && number < m_pictures.size(); --left) {
            m_pictures[number].shownAt = m_pictures[number].soughtAt = decodedAt;
            decodedAt += durations.at(row, 1);
            ++number;
        }
    }
    const QByteArrayView box = boxAt(sampleTable, {"ctts"});
    if (number < m_pictures.size() || box.isNull())
        return number == m_pictures.size();
    const Table delays(box, 2);
    number = 0;
    for (size_t row = 0; delays.isWhole() && row < delays.count(); ++row) {
        const auto delay = qint32(delays.at(row, 1));
        for (size_t left = delays.at(row, 0); left > 0 && number < m_pictures.size(); --left)
            m_pictures[number++].shownAt += delay;
    }
    return number == m_pictures.size();
}

bool Mp4Index::applyEdit(QByteArrayView track, quint32 movieTicks)
{
    const QByteArrayView box = boxAt(track, {"edts", "elst"});
    if (box.isNull())
        return true;
    const bool isWide = numberAt<quint8>(box, 0) == 1;
    const qint64 start = isWide ? numberAt<qint64>(box, 16) : qint64(numberAt<qint32>(box, 12));
    const quint64 length = isWide ? numberAt<quint64>(box, 8) : numberAt<quint32>(box, 8);
    const auto first = std::span(m_pictures).first(std::min(longestReordering, m_pictures.size()));
    const auto firstShown = std::ranges::min(first, {}, &CodedPicture::shownAt);
    // Only an edit that does no more than to begin with the first picture.
    if (numberAt<quint32>(box, 4) != 1 || start != firstShown.shownAt ||
        numberAt<quint32>(box, isWide ? 24 : 16) != 0x10000 || movieTicks == 0)
        return false;
    for (CodedPicture &picture : m_pictures) {
        picture.shownAt -= start;
        picture.soughtAt -= start;
    }
    const auto lastShown = std::ranges::max(m_pictures, {}, &CodedPicture::shownAt).shownAt;
    const double end = double(length) / movieTicks * double(m_ticksASecond);
    if (end <= double(lastShown))
        m_end = qint64(end) - m_ticksASecond;
    return true;
}

bool Mp4Index::readSyncs(QByteArrayView sampleTable)
{
    const QByteArrayView box = boxAt(sampleTable, {"stss"});
    const Table syncs(box, 1);
    if (!box.isNull() && !syncs.isWhole())
        return false;
    const size_t count = box.isNull() ? m_pictures.size() : syncs.count();
    for (size_t row = 0; row < count; ++row) {
        const size_t number = box.isNull() ? row : size_t(syncs.at(row, 0)) - 1;
        if (number >= m_pictures.size())
            return false;
        CodedPicture &picture = m_pictures[number];
        picture.isSync = true;
        // ffmpeg passes over a sync picture that is shown after the time that is sought.
        picture.soughtAt = picture.shownAt;
        m_syncs.push_back(number);
    }
    const auto shownAt = [this](size_t number) { return m_pictures[number].shownAt; };
    return !m_syncs.empty() && m_syncs.front() == 0 && std::ranges::is_sorted(m_syncs) &&
           std::ranges::is_sorted(m_syncs, {}, shownAt);
}

bool Mp4Index::visitFrom(qint64 tick, const std::function<bool(const CodedPicture &)> &visit)
{
    const auto shownAt = [this](size_t number) { return m_pictures[number].shownAt; };
    const auto after = std::ranges::upper_bound(m_syncs, tick, {}, shownAt);
    const size_t first = after == m_syncs.begin() ? 0 : *std::prev(after);
    for (size_t number = first; number < m_pictures.size(); ++number) {
        if (m_pictures[number].shownAt >= m_end)
            return false;
        if (!visit(m_pictures[number]))
            break;
    }
    return true;
}

} // namespace vignar
