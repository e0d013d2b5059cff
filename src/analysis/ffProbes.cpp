#include "analysis/ffProbes.h"

#include "analysis/ffReportStreams.h"
#include "analysis/pictureStream.h"
#include "analysis/reportText.h"
#include "analysis/streamKeys.h"
#include "classShared/durations.h"
#include "classShared/numbers.h"
#include "classShared/truncation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>

using namespace Qt::StringLiterals;

namespace vignar
{
namespace
{

constexpr QStringView packetMark = u"ff_read_packet stream=";
constexpr double assumedTimeBase = 1000;

template <class Predicate>
QString lastLine(const QString &text, Predicate isWanted)
{
    const QStringList lines = reportLines(text);
    const auto found = std::find_if(lines.crbegin(), lines.crend(), isWanted);
    return found == lines.crend() ? QString() : *found;
}

/// A stream of the input, as the packet trace needs it.
struct TracedStream {
    QChar type;
    int id = 0;
    double timeBase = assumedTimeBase;
};

/// "Stream #0:1[0x101], 77, 1/90000: Audio: …": only a report of the log level "debug"
/// states the time base.
double timeBaseOf(const QList<QStringView> &pieces)
{
    const auto found = std::find_if(pieces.cbegin() + 1, pieces.cend(),
                                    [](QStringView piece) { return piece.contains(u'/'); });
    if (found == pieces.cend() || !found->contains(u':'))
        return assumedTimeBase;
    const double timeBase = str2Float(textAfter(textBefore(*found, u":"), u"/").toString());
    return timeBase > 0 ? timeBase : assumedTimeBase;
}

std::optional<TracedStream> tracedStream(QStringView line)
{
    const StreamType type = streamType(line);
    if (type == StreamType::other || type == StreamType::attachedPicture ||
        line.contains(u" -> ") || line.contains(u"rawvideo"))
        return std::nullopt;
    const QList<QStringView> pieces = line.split(u", ");
    const QChar letter = type == StreamType::video ? u'v' : type == StreamType::audio ? u'a' : u's';
    return TracedStream{letter, leadingInt(textAfter(pieces.constFirst(), u":")),
                        timeBaseOf(pieces)};
}

/// The streams of the last input. The output's carry the same numbers.
QList<TracedStream> inputStreams(const QStringList &lines)
{
    QList<TracedStream> streams;
    bool isInput = true;
    for (const QString &line : lines) {
        const QStringView text = QStringView(line).trimmed();
        if (text.startsWith(u"Output #"))
            isInput = false;
        if (text.startsWith(u"Input #0")) {
            isInput = true;
            streams.clear();
        }
        if (!isInput)
            continue;
        if (const auto stream = tracedStream(line))
            streams.append(*stream);
    }
    return streams;
}

/// The packet's time in units of its stream's time base, when it is known: "NOPTS" and the
/// lowest number there is say that it is not. What lies before 0 leads a decoder in, and
/// is not played.
std::optional<double> packetTime(QStringView trace)
{
    for (const QStringView mark : {QStringView(u"pts="), QStringView(u"dts=")}) {
        bool isNumber = false;
        const qlonglong time = textBefore(textAfter(trace, mark), u", ").toLongLong(&isNumber);
        if (isNumber && time != std::numeric_limits<qlonglong>::min())
            return double(std::max(0LL, time));
    }
    return std::nullopt;
}

std::map<int, double> firstPacketTimes(const QStringList &lines)
{
    std::map<int, double> times;
    for (const QString &line : lines) {
        // A trace may follow a progress line that was not ended.
        const QStringView trace = textAfter(line, packetMark);
        if (trace.isEmpty() || !trace.front().isDigit())
            continue;
        if (const auto time = packetTime(trace))
            times.try_emplace(leadingInt(trace), *time);
    }
    return times;
}

/// Start of the stream in seconds.
std::optional<double> startOf(const TracedStream &stream, const std::map<int, double> &times)
{
    const auto found = times.find(stream.id);
    return found == times.end() ? std::nullopt : std::optional(found->second / stream.timeBase);
}

/// Of streams with a video stream among them.
TracedStream shownVideo(const QList<TracedStream> &streams, const QString &report)
{
    const auto isVideo = [](const TracedStream &stream) { return stream.type == u'v'; };
    const auto first = std::ranges::find_if(streams, isVideo);
    if (std::ranges::count_if(streams, isVideo) == 1)
        return *first;
    const int shown = videoStreams(report).value(0, first->id);
    const auto found = std::ranges::find_if(
        streams, [&](const TracedStream &stream) { return isVideo(stream) && stream.id == shown; });
    return found == streams.cend() ? *first : *found;
}

int countAfter(QStringView line, QStringView mark)
{
    return leadingInt(textAfter(line, mark));
}

/// Seconds that a progress line states.
float progressTime(QStringView line)
{
    QStringView text = textBefore(textAfter(line, u"time="), u" ");
    // The sign of "-00:00:00.07" must not get lost with its hours.
    const bool isNegative = text.startsWith(u'-');
    const QString time = text.sliced(isNegative ? 1 : 0).toString();
    const float seconds = time.contains(u':') ? timecodeStr2Float(time) : str2Float(time);
    return isNegative ? -seconds : seconds;
}

/// Seconds that the last of the pictures is shown: as long as the others on average, and at
/// most one. ffmpeg's times are those at which the pictures begin, cut to hundredths.
float lastPicture(QStringView line, float span)
{
    constexpr float cutOff = 0.02F;
    const int pictures = line.contains(u"frame=") ? countAfter(line, u"frame=") : 0;
    return pictures < 2 ? 0.0F : std::min(1.0F, span / float(pictures - 1)) + cutOff;
}

} // namespace

bool isFfmpegVsyncText(const QString &text)
{
    return text.contains(u"***") && text.contains(u"dup!") &&
           text.contains(u"timestamp discontinuity");
}

QString idetFieldOrder(const QString &text)
{
    const QString line = lastLine(text, [](const QString &candidate) {
        return textAfter(candidate, u" Single frame detection: ").contains(u"TFF:");
    });
    const int top = countAfter(line, u"TFF:");
    const int bottom = countAfter(line, u" BFF:");
    if (top > 0 || bottom > 0)
        return bottom > top ? u"BFF"_s : u"TFF"_s;
    const bool isProgressive =
        countAfter(line, u" Progressive:") > countAfter(line, u" Undetermined:");
    return isProgressive ? u"PFF"_s : QString();
}

int durationM2vFromText(const QString &text)
{
    const auto isProgress = [](const QString &line) { return line.contains(u"time="); };
    const QStringList lines = reportLines(text);
    const auto first = std::ranges::find_if(lines, isProgress);
    const QString last = lastLine(text, isProgress);
    const float end = progressTime(last);
    if (!(end > 0))
        return 1;
    // Pictures that are shown later than they are decoded begin before 0.
    const float span = end - std::min(0.0F, progressTime(*first));
    return std::max(1, truncatedTo<int>(span + lastPicture(last, span)));
}

std::optional<Dico> ptsDtsOffsetMs(const QString &report)
{
    if (!report.contains(packetMark))
        return std::nullopt;
    const QStringList lines = reportLines(report);
    const QList<TracedStream> streams = inputStreams(lines);
    const auto first = [&streams](QChar type) {
        return std::ranges::find(streams, type, &TracedStream::type);
    };
    const std::map<int, double> times = firstPacketTimes(lines);
    if (first(u'v') == streams.cend() || first(u'a') == streams.cend())
        return std::nullopt;
    const auto videoStart = startOf(shownVideo(streams, report), times);
    if (!videoStart)
        return std::nullopt;
    Dico offsets;
    for (const TracedStream &stream : streams) {
        if (const auto start = startOf(stream, times); start && stream.type != u'v')
            offsets.insert(offsetMsKey(stream.type, stream.id),
                           std::round((*start - *videoStart) * 1000));
    }
    return offsets;
}

QString formatOfFileType(const QString &fileType)
{
    if (fileType.contains(u"DIF (DV"))
        return u"dv"_s;
    return fileType.contains(u"MPEG") ? u"mpeg"_s : QString();
}

QString forceFormatLite(const QString &report)
{
    struct DataTag {
        QLatin1String tag;
        /// Null: nothing is forced.
        QLatin1String format;
    };
    // The longer tags hold the shorter ones, so they come first.
    constexpr std::array tags{
        DataTag{"m2v1"_L1, {}}, DataTag{"m2v"_L1, "mpegvideo"_L1}, DataTag{"m2s"_L1, "mpeg"_L1},
        DataTag{"m1v1"_L1, {}}, DataTag{"m1v"_L1, "mpegvideo"_L1}, DataTag{"m1s"_L1, "mpeg"_L1}};
    const auto found = std::ranges::find_if(
        tags, [&report](const DataTag &tag) { return report.contains("Data: "_L1 + tag.tag); });
    return found == tags.end() || found->format.isNull() ? QString() : QString(found->format);
}

bool isMpegTsText(const QString &report)
{
    const QString line = lastLine(report, [](const QString &candidate) {
        return textAfter(candidate, u"Input #0").contains(u"from");
    });
    return textBefore(textAfter(line, u"Input #0"), u"from").contains(u"mpegts");
}

float ffRevisionOfText(const QString &text)
{
    const QString firstLine = reportLines(text).constFirst();
    return str2Float(textAfter(firstLine, u"version ").toString());
}

} // namespace vignar
