#include "analysis/ffReport.h"

#include "analysis/ffReportStreams.h"
#include "analysis/reportText.h"
#include "analysis/streamKeys.h"
#include "classShared/durations.h"
#include "classShared/lineLog.h"
#include "classShared/paths.h"
#include "classShared/truncation.h"
#include "tasks/blockingRuns.h"
#include "tasks/toolPlaces.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <span>

using namespace Qt::StringLiterals;

namespace vignar
{
namespace
{

/// Chapters nearer than this to the one kept before are dropped, in seconds.
constexpr double leastChapterGap = 20.0;

using Lines = std::span<const QString>;

bool isInputLine(QStringView line)
{
    return line.trimmed().startsWith(u"Input #");
}

bool isAfterInput(QStringView line)
{
    const QStringView text = line.trimmed();
    return text.startsWith(u"At least one output file must be specified") ||
           text.startsWith(u"Output #0, ");
}

/// The lines about the input: from the last "Input #0, " to the first line of another
/// matter after it. Lines are recognised by their beginning, so that a title or a file
/// name that holds such words cannot move the borders.
Lines inputBlock(Lines lines)
{
    const auto isStart = [](const QString &line) {
        return line.trimmed().startsWith(u"Input #0, ");
    };
    const auto lastStart = std::find_if(lines.rbegin(), lines.rend(), isStart);
    const auto begin = lastStart == lines.rend() ? lines.begin() : lastStart.base() - 1;
    const auto end = std::find_if(begin, lines.end(), isAfterInput);
    return {begin, end};
}

void readDurationLine(QStringView line, Dico &infos)
{
    for (const QStringView piece : line.split(u", ")) {
        if (piece.contains(u"Duration: ")) {
            const QString timecode = piece.split(u": ").at(1).toString();
            // Less than a second keeps its hundredths, for 0 would read as unknown.
            if (const float seconds = timecodeStr2Float(timecode); seconds >= 1)
                write(infos, Keys::w_duration, truncatedTo<int>(seconds));
            else if (seconds > 0)
                write(infos, Keys::w_duration, std::round(seconds * 100.0) / 100);
        } else if (piece.contains(u"start: ")) {
            write(infos, Keys::w_offset, textAfter(piece, u"start: ").trimmed().toDouble());
        } else if (piece.contains(u"bitrate: ")) {
            logVerbose(u"cf logs %@", piece);
            if (const int bitrate = leadingInt(textAfter(piece, u"bitrate: ")); bitrate > 0)
                write(infos, Keys::w_bitrate, bitrate);
        }
    }
}

/// Where the colon stands after the key of a container's metadata: four blanks, and the
/// key padded to sixteen.
constexpr qsizetype metadataColon = 20;

bool isMetadataLine(const QString &line)
{
    return line.size() > metadataColon && line.startsWith(u"    ") &&
           line.sliced(metadataColon).startsWith(u": ");
}

/// Reads the input block line by line. A stream's number counts the streams of its type, and
/// pictures that are merely attached to the source, such as a cover, are numbered after every
/// real video stream, and from 1 where there is none.
class BlockReader
{
public:
    explicit BlockReader(Lines block) : m_block(block)
    {
        const auto videos = std::ranges::count(
            block, StreamType::video, [](const QString &line) { return streamType(line); });
        m_attachedPicture = std::max(1, int(videos));
    }

    Dico read()
    {
        for (std::size_t i = 0; i < m_block.size(); ++i)
            readLine(i);
        for (const auto &[number, degrees] : m_turns)
            turnUpright(m_infos, number, degrees);
        if (m_video > 1)
            write(m_infos, Keys::w_videos, m_video);
        return m_infos;
    }

private:
    void readLine(std::size_t index)
    {
        const QString &line = m_block[index];
        if (isInputLine(line))
            readWrapper(line);
        else if (!m_isDurationRead && isMetadataLine(line))
            readContainerMetadata(line);
        else if (line.trimmed().startsWith(u"Duration: "))
            readDuration(line);
        else if (isStreamLine(line))
            readStream(line, m_block.subspan(index + 1));
        else if (const int degrees = quarterTurn(line); degrees != 0 && m_currentVideo)
            m_turns[*m_currentVideo] = degrees;
    }

    void readWrapper(QStringView line)
    {
        if (const QList<QStringView> pieces = line.split(u", "); pieces.size() > 1)
            write(m_infos, Keys::wrapper, pieces.at(1).toString());
    }

    void readDuration(const QString &line)
    {
        readDurationLine(line, m_infos);
        m_isDurationRead = true;
    }

    /// The comment of the container. A further line of a value stands under an empty key.
    void readContainerMetadata(const QString &line)
    {
        if (const QString key = line.first(metadataColon).trimmed(); !key.isEmpty())
            m_metadataKey = key.toLower();
        if (m_metadataKey != u"comment")
            return;
        const QString before = vignar::read(m_infos, Keys::w_comment).value_or(QString());
        const QString value = line.sliced(metadataColon + 2);
        write(m_infos, Keys::w_comment, before.isEmpty() ? value : before + u'\n' + value);
    }

    void readStream(QStringView line, Lines following)
    {
        m_currentVideo.reset();
        switch (streamType(line)) {
        case StreamType::video:
            readVideo(line, m_video++);
            break;
        case StreamType::attachedPicture:
            readVideo(line, m_attachedPicture++);
            break;
        case StreamType::audio:
            readAudioLine(line, m_audio++, m_infos);
            break;
        case StreamType::subtitle:
            readSubtitleLine(line, following, m_subtitle++, m_infos);
            break;
        case StreamType::other:
            break;
        }
    }

    void readVideo(QStringView line, int number)
    {
        readVideoLine(line, number, m_infos);
        m_currentVideo = number;
    }

    Lines m_block;
    Dico m_infos;
    std::map<int, int> m_turns;
    bool m_isDurationRead = false;
    QString m_metadataKey;
    std::optional<int> m_currentVideo;
    int m_video = 0;
    int m_attachedPicture = 1;
    int m_audio = 0;
    int m_subtitle = 0;
};

/// Some Blu-ray streams pass for AAC of 96 kHz; they are PCM.
void correctBluRayAudio(Dico &infos)
{
    if (read(infos, Keys::a_codec, 0) != u"aac"_s || read(infos, Keys::a_rate, 0) != 96000)
        return;
    write(infos, Keys::a_codec, 0, u"pcm_bluray"_s);
    write(infos, Keys::a_rate, 0, 48000);
    write(infos, Keys::a_channels, 0, 2);
    write(infos, Keys::a_bitrate, 0, 1536);
    write(infos, Keys::a0_force, 1);
}

/// ffmpeg's report on the source; null when there is no such source.
QString newReport(const QString &srcPath)
{
    if (!pathExists(srcPath)) {
        logDebug(u"ffmpeg > ffInfos: :-( !src && !verbose");
        logLine(u"ffInfos             :-( no src & no verbose");
        return {};
    }
    logLine(u"new… srcPathStr     : %@", srcPath);
    // Without an output file ffmpeg prints what it knows of the input and stops.
    const QString report = taskArray({ffmpegPath(), u"-loglevel"_s, u"info"_s, u"-i"_s, srcPath});
    logLine(u"verboseStr shell    : %@", report);
    return report;
}

void copyEntry(const Dico &from, const QString &fromKey, QLatin1String toKey, Dico &to)
{
    if (const auto found = from.constFind(fromKey); found != from.cend())
        to.insert(toKey, *found);
}

Dico streamProperties(const Dico &infos, const QString &prefix)
{
    constexpr std::array properties{StreamKeys::id.text,      StreamKeys::codec.text,
                                    StreamKeys::bitrate.text, StreamKeys::channels.text,
                                    StreamKeys::lang.text,    StreamKeys::rate.text};
    Dico stream;
    for (const QLatin1String property : properties)
        copyEntry(infos, prefix + u'_' + property, property, stream);
    if (const auto id = read(stream, StreamKeys::id))
        copyEntry(infos, offsetMsKey(prefix.front(), *id), StreamKeys::offsetMs.text, stream);
    return stream;
}

} // namespace

std::optional<Dico> ffInfos(const QString &srcPath, const QString &report)
{
    logDebug(u"ffInfos             - begin");
    const QString text = report.contains(u"Input #") ? report : newReport(srcPath);
    if (text.isNull())
        return std::nullopt;
    // A file name may hold line breaks and ffmpeg's own words.
    const auto infos = parseFfReport(withoutSourcePath(text, srcPath));
    if (infos)
        logDebug(u"ffInfos             : %@", QVariant(*infos));
    return infos;
}

std::optional<Dico> parseFfReport(const QString &report)
{
    if (!report.contains(u"Input #")) {
        logDebug(u"ffInfos > !Input # :-(((");
        logLine(u"ffInfos             :-( no input found");
        return std::nullopt;
    }
    const QStringList lines = reportLines(report);
    Dico infos = BlockReader(inputBlock(lines)).read();
    correctBluRayAudio(infos);
    return infos;
}

std::optional<QList<double>> ffChapters(const QString &report)
{
    logLine(u"ffChapters          - begin");
    QList<double> starts;
    for (const QString &line : reportLines(report)) {
        if (!line.trimmed().startsWith(u"Chapter #") || !line.contains(u": start ") ||
            !line.contains(u", end "))
            continue;
        const double start = reportNumber(textBefore(textAfter(line, u": start "), u", end "));
        if (starts.isEmpty() || start - starts.last() > leastChapterGap)
            starts.append(start);
    }
    logLine(u"ffChapters          - end : %@",
            starts.isEmpty() ? QVariant(u"nil"_s)
                             : QVariant(QVariantList(starts.cbegin(), starts.cend())));
    return starts.isEmpty() ? std::nullopt : std::optional(starts);
}

std::optional<Dico> ffStreamId(const Dico &infos)
{
    logVerbose(u"ffStreamId() d      : %@", QVariant(infos));
    Dico types;
    int pass = 0;
    for (auto entry = infos.cbegin(); entry != infos.cend(); ++entry) {
        const qsizetype at = entry.key().indexOf(u"_id");
        if (at < 1)
            continue;
        logVerbose(u"ffStreamId() pass   # %ld", ++pass);
        const QString prefix = entry.key().first(at);
        const Dico stream = streamProperties(infos, prefix);
        if (!u"vas"_s.contains(prefix.front())) {
            logDebug(u"ffStreamId() pass   # %ld %@", pass,
                     read(stream, StreamKeys::codec).value_or(u"!codec==nil"_s));
            continue;
        }
        Dico streams = types.value(prefix.first(1)).toMap();
        streams.insert(QString::number(leadingInt(entry.key().mid(1, 2))), stream);
        types.insert(prefix.first(1), streams);
    }
    logDebug(u"ffStreamId() md     : %@", QVariant(types));
    return types.isEmpty() ? std::nullopt : std::optional(types);
}

} // namespace vignar
