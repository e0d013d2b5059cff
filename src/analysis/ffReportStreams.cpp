#include "analysis/ffReportStreams.h"

#include "analysis/reportText.h"
#include "analysis/streamPieces.h"
#include "classShared/lineLog.h"

#include <algorithm>
#include <array>
#include <limits>

namespace vignar
{
namespace
{

constexpr StreamNaming audioNaming{Keys::a_id, Keys::a_lang, Keys::a_codec, u"Audio: "};
constexpr StreamNaming subtitleNaming{Keys::s_id, Keys::s_lang, Keys::s_codec, u"Subtitle: "};

bool audioNames(const StreamPiece &piece, Dico &infos)
{
    return readNaming(piece, audioNaming, infos);
}

bool audioRate(const StreamPiece &piece, Dico &infos)
{
    if (!piece.text.contains(u" Hz"))
        return false;
    write(infos, Keys::a_rate, piece.number, leadingInt(textBefore(piece.text, u" Hz")));
    return true;
}

bool audioBitrate(const StreamPiece &piece, Dico &infos)
{
    return readBitrate(piece, Keys::a_bitrate, infos);
}

int dottedSum(QStringView layout)
{
    const qint64 sum =
        qint64(leadingInt(textBefore(layout, u"."))) + leadingInt(textAfter(layout, u"."));
    return int(std::min<qint64>(sum, std::numeric_limits<int>::max()));
}

int channelCount(QStringView layout)
{
    if (layout.compare(u"mono", Qt::CaseInsensitive) == 0)
        return 1;
    if (layout.compare(u"stereo", Qt::CaseInsensitive) == 0 ||
        layout.compare(u"2 channels", Qt::CaseInsensitive) == 0)
        return 2;
    // A bare "6 channels" tells no layout and does not count, "5.1 channels" does.
    return layout.contains(u'.') ? dottedSum(layout) : -1;
}

bool audioChannels(const StreamPiece &piece, Dico &infos)
{
    if (infos.contains(Keys::a_channels(piece.number)))
        return true;
    const int count = channelCount(piece.text);
    logDebug(u"channelsInt         : %ld", count);
    if (count > 0)
        write(infos, Keys::a_channels, piece.number, count);
    return true;
}

constexpr std::array<PieceRule, 4> audioRules{audioNames, audioRate, audioBitrate, audioChannels};

/// Older versions (4.1) do not say that a picture is attached. They show it by the rate of
/// the clock that it is filed under, and by no count of pictures per second.
bool isTimelessPicture(QStringView line)
{
    constexpr std::array pictureCodecs{u"png", u"mjpeg", u"gif", u"bmp", u"tiff", u"webp"};
    const QStringView codec = textBefore(textBefore(textAfter(line, u"Video: "), u","), u" ");
    return line.contains(u", 90k tbr, 90k tbn") && !line.contains(u" fps, ") &&
           std::ranges::find(pictureCodecs, codec) != pictureCodecs.end();
}

bool isAttachedPicture(QStringView line)
{
    // What ffmpeg says of the stream's purpose follows the last piece.
    return line.sliced(std::max<qsizetype>(0, line.lastIndexOf(u", ")))
               .contains(u"(attached pic)") ||
           isTimelessPicture(line);
}

} // namespace

bool isStreamLine(QStringView line)
{
    return line.trimmed().startsWith(u"Stream #");
}

StreamType streamType(QStringView line)
{
    if (!isStreamLine(line))
        return StreamType::other;
    if (line.contains(u"Audio: "))
        return StreamType::audio;
    if (line.contains(u"Video: "))
        return isAttachedPicture(line) ? StreamType::attachedPicture : StreamType::video;
    return line.contains(u"Subtitle: ") ? StreamType::subtitle : StreamType::other;
}

void readAudioLine(QStringView line, int number, Dico &infos)
{
    for (const QStringView text : line.split(u", "))
        applyFirst(audioRules, {.text = text, .number = number}, infos);
}

void readSubtitleLine(QStringView line, std::span<const QString> following, int number, Dico &infos)
{
    for (const QStringView text : line.split(u", "))
        readNaming({.text = text, .number = number}, subtitleNaming, infos);
    if (!infos.contains(Keys::s_lang(number)))
        return;
    const QStringView mark = u"title           : ";
    for (const QString &next : following.first(std::min<std::size_t>(2, following.size()))) {
        if (!next.contains(mark))
            continue;
        const QString title = textAfter(next, mark).toString();
        logVerbose(u"key:'s%ld_lang+' - value:'%@'", number, title);
        write(infos, Keys::s_title, number, title);
        return;
    }
}

} // namespace vignar
