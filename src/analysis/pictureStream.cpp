#include "analysis/pictureStream.h"

#include "analysis/ffReport.h"
#include "analysis/ffReportStreams.h"
#include "analysis/reportText.h"
#include "classShared/lineLog.h"
#include "tasks/toolPlaces.h"
#include "tasks/waitedRun.h"

#include <QRegularExpression>

#include <algorithm>
#include <chrono>

using namespace Qt::StringLiterals;

namespace vignar
{
namespace
{

/// What the flag "default" is worth in pixels (ffmpeg 5.1, map_auto_video()).
constexpr qint64 defaultWorth = 5'000'000;

/// The beginning of a stream is there at once; only a stream that has hardly any pictures is
/// looked for to the end of the file.
constexpr std::chrono::seconds countLimit{20};

struct VideoStream {
    int index = 0;
    qint64 worth = 0;
};

int streamIndex(QStringView line)
{
    return leadingInt(textAfter(textAfter(line, u"Stream #"), u":"));
}

bool isDefault(QStringView line)
{
    // What ffmpeg says of the stream's purpose follows the last piece.
    return line.sliced(std::max<qsizetype>(0, line.lastIndexOf(u", "))).contains(u"(default)");
}

QList<VideoStream> streamsOf(const Dico &infos, const QStringList &lines)
{
    QList<VideoStream> streams;
    for (int number = 0; number < read(infos, Keys::w_videos).value_or(1); ++number) {
        const auto index = read(infos, Keys::v_id, number);
        if (!index)
            continue;
        const auto stated = std::ranges::find_if(lines, [&index](const QString &line) {
            return streamType(line) == StreamType::video && streamIndex(line) == *index;
        });
        const qint64 pixels = qint64(read(infos, Keys::v_width, number).value_or(0)) *
                              read(infos, Keys::v_height, number).value_or(0);
        const bool weighsMore = stated != lines.end() && isDefault(*stated);
        streams.append({*index, pixels + (weighsMore ? defaultWorth : 0)});
    }
    return streams;
}

/// From "Stream #0:1 -> #0:0 (h264 (native) -> …)" below the last "Stream mapping:".
std::optional<int> decodedStream(const QStringList &lines)
{
    static const QRegularExpression mapping(u"^ *Stream #0:(\\d+) -> #0:0 \\("_s);
    const auto isHead = [](const QString &line) { return line.startsWith(u"Stream mapping:"); };
    const auto head = std::find_if(lines.crbegin(), lines.crend(), isHead);
    if (head == lines.crend() || head == lines.crbegin())
        return std::nullopt;
    const QRegularExpressionMatch match = mapping.match(*head.base());
    return match.hasMatch() ? std::optional(match.captured(1).toInt()) : std::nullopt;
}

} // namespace

QList<int> videoStreams(const QString &report)
{
    const QStringList lines = reportLines(report);
    QList<VideoStream> streams = streamsOf(parseFfReport(report).value_or(Dico()), lines);
    const auto decoded = decodedStream(lines);
    std::ranges::stable_sort(streams, [&decoded](const VideoStream &one, const VideoStream &other) {
        if ((one.index == decoded) != (other.index == decoded))
            return one.index == decoded;
        return one.worth > other.worth;
    });
    QList<int> indices;
    for (const VideoStream &stream : std::as_const(streams))
        indices.append(stream.index);
    return indices;
}

std::optional<int> pictureStream(const QString &report, const PictureCounter &countPictures)
{
    const QList<int> streams = videoStreams(report);
    if (streams.size() < 2)
        return std::nullopt;
    const auto hasMany = [&countPictures](int stream) {
        const int pictures = countPictures(stream);
        logLine(u"video stream        : 0:%ld, %ld pictures or more", stream, pictures);
        return pictures >= fewPictures;
    };
    const auto found = std::ranges::find_if(streams, hasMany);
    return found == streams.end() ? streams.constFirst() : *found;
}

void putFirst(int stream, Dico &infos)
{
    static const QRegularExpression streamKey(u"^v(\\d+)(_.+)$"_s);
    int first = 0;
    while (infos.contains(Keys::v_codec(first)) && read(infos, Keys::v_id, first) != stream)
        ++first;
    if (first == 0 || !infos.contains(Keys::v_codec(first)))
        return;
    Dico renumbered;
    for (auto entry = infos.cbegin(); entry != infos.cend(); ++entry) {
        const QRegularExpressionMatch match = streamKey.match(entry.key());
        const int number = match.captured(1).toInt();
        if (!match.hasMatch() || number > first)
            renumbered.insert(entry.key(), *entry);
        else
            renumbered.insert(u'v' + QString::number(number == first ? 0 : number + 1) +
                                  match.captured(2),
                              *entry);
    }
    infos = renumbered;
}

int picturesOfStream(const QString &srcPath, int stream)
{
    const QString report =
        taskArrayWithin({ffmpegPath(), u"-loglevel"_s, u"info"_s, u"-i"_s, srcPath, u"-map"_s,
                         u"0:%1"_s.arg(stream), u"-c"_s, u"copy"_s, u"-frames:v"_s,
                         QString::number(fewPictures), u"-f"_s, u"null"_s, u"-y"_s, u"/dev/null"_s},
                        countLimit);
    const QStringList lines = reportLines(withoutMetadata(withoutSourcePath(report, srcPath)));
    const auto progress = std::find_if(lines.crbegin(), lines.crend(), [](const QString &line) {
        return line.startsWith(u"frame=");
    });
    return progress == lines.crend() ? 0 : leadingInt(textAfter(*progress, u"frame="));
}

} // namespace vignar
