#include "analysis/ffReportStreams.h"

#include "analysis/reportText.h"
#include "analysis/streamPieces.h"
#include "classShared/lineLog.h"

#include <QRegularExpression>
#include <QSize>

#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

namespace vignar
{
namespace
{

constexpr StreamNaming videoNaming{Keys::v_id, Keys::v_lang, Keys::v_codec, u"Video: "};

/// All 18 bits of the field set: MPEG video whose rate varies.
constexpr QStringView variableMpegBitrate = u"104857 kb/s";

bool videoNames(const StreamPiece &piece, Dico &infos)
{
    return readNaming(piece, videoNaming, infos);
}

bool videoBitrate(const StreamPiece &piece, Dico &infos)
{
    const QString codec = read(infos, Keys::v_codec, piece.number).value_or(QString());
    if (piece.text.startsWith(variableMpegBitrate) && codec.startsWith(u"mpeg"))
        return true;
    return readBitrate(piece, Keys::v_bitrate, infos);
}

/// A rate as ffmpeg prints it: thousands as "1k".
double printedRate(QStringView text)
{
    return reportNumber(text) * (text.endsWith(u'k') ? 1000 : 1);
}

/// The average rate of the line ("23.98 fps"); 0 where it states none.
double averageRate(QStringView line)
{
    if (!line.contains(u" fps, "))
        return 0;
    const QStringView before = textBefore(line, u" fps, ");
    const qsizetype comma = before.lastIndexOf(u", ");
    return printedRate(before.sliced(comma < 0 ? 0 : comma + 2));
}

/// Timestamps that lie apart by no pattern make ffmpeg state the clock of the container as
/// the rate ("1k tbr", "600 tbr"). Above 120 only the average rate tells a fast camera from it.
bool isClock(double rate, double average)
{
    return rate > 120 && std::abs(rate - average) > 0.1 * rate;
}

bool videoFrameRate(const StreamPiece &piece, Dico &infos)
{
    if (!piece.text.contains(u" tbr"))
        return false;
    logVerbose(u" tbr? ffmpeg>ffinfos : %@", piece.text);
    double rate = printedRate(textBefore(piece.text, u" tbr"));
    // 59.94 fields over film with pulldown are 29.97 pictures.
    if (std::abs(piece.averageRate - 24.0) <= 0.1 && std::abs(59.94 - rate) < 0.01)
        rate /= 2;
    if (!isClock(rate, piece.averageRate))
        write(infos, Keys::v_fps, piece.number, rate);
    return true;
}

bool videoTimeBase(const StreamPiece &piece, Dico &infos)
{
    if (!piece.text.contains(u" tbc"))
        return false;
    const QStringView base = textBefore(piece.text, u" tbc");
    // "90k" counts as 90.
    write(infos, Keys::v_tbc, piece.number, double(leadingInt(textBefore(base, u"k"))));
    return true;
}

/// "720x576 …" as a size. Codec tags ("0x31637661") and pixel formats hold an "x" too,
/// so nothing but digits may stand on both sides.
std::optional<QSize> pictureSize(QStringView piece)
{
    const QStringView width = textBefore(piece, u"x").trimmed();
    const QStringView height = textBefore(textAfter(piece, u"x"), u" ");
    const QSize size(leadingInt(width), leadingInt(height));
    if (size.isEmpty() || !isPlainInt(width) || !isPlainInt(height))
        return std::nullopt;
    return size;
}

void readAspect(const StreamPiece &piece, AspectKind kind, const StreamKey<QString> &key,
                Dico &infos)
{
    const QString ratio = ffAspectRatioStr(piece.text.toString(), kind);
    // "0:1" is how some versions write an unknown ratio.
    if (leadingInt(ratio) > 0 && leadingInt(textAfter(ratio, u":")) > 0)
        write(infos, key, piece.number, ratio);
}

bool videoAspect(const StreamPiece &piece, Dico &infos)
{
    const QString text = piece.text.toString();
    if (ffAspectRatioStr(text, AspectKind::pixel).isNull() &&
        ffAspectRatioStr(text, AspectKind::display).isNull())
        return false;
    readAspect(piece, AspectKind::pixel, Keys::v_par, infos);
    readAspect(piece, AspectKind::display, Keys::v_dar, infos);
    return true;
}

bool videoSize(const StreamPiece &piece, Dico &infos)
{
    const auto size = pictureSize(piece.text);
    if (!size)
        return false;
    write(infos, Keys::v_width, piece.number, size->width());
    write(infos, Keys::v_height, piece.number, size->height());
    videoAspect(piece, infos);
    return true;
}

bool videoPixelFormat(const StreamPiece &piece, Dico &infos)
{
    if (piece.text.contains(u"fps") || piece.text.contains(u"tbn") || isPlainInt(piece.text) ||
        piece.text.contains(u'/') || textBefore(piece.text, u"(") == u"none")
        return false;
    write(infos, Keys::v_chroma, piece.number, piece.text.toString());
    return true;
}

constexpr std::array<PieceRule, 7> videoRules{videoNames,      videoBitrate, videoFrameRate,
                                              videoTimeBase,   videoSize,    videoAspect,
                                              videoPixelFormat};

/// The names stand in the order of matrix, primaries and transfer; "unknown" is no name.
void readColourNames(const QList<QStringView> &names, int number, Dico &infos)
{
    constexpr std::array keys{Keys::v_matrix, Keys::v_primaries, Keys::v_transfer};
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (names.at(qsizetype(i)) != u"unknown")
            write(infos, keys.at(i), number, names.at(qsizetype(i)).toString());
    }
}

/// "yuv420p10le(tv, bt2020nc/bt2020/smpte2084, progressive)". One name stands for all
/// three where they are alike; among the field orders and places of chroma samples that
/// may follow, only these can be such a name.
void readColours(QStringView line, int number, Dico &infos)
{
    static const QRegularExpression pixelFormat(
        u", ([a-z][a-z0-9_]*)(?:\\(((?:[^()]|\\(swapped\\))*)\\))?, \\d+x\\d+"_s);
    const QStringList names{u"bt709"_s, u"smpte170m"_s, u"bt470bg"_s, u"smpte240m"_s};
    const QRegularExpressionMatch match = pixelFormat.match(line.toString());
    if (match.hasMatch() && match.captured(1) != u"none")
        write(infos, Keys::v_pixelFormat, number, match.captured(1));
    for (const QStringView word : match.capturedView(2).split(u", ")) {
        const QList<QStringView> colours = word.split(u'/');
        if (word == u"tv" || word == u"pc")
            write(infos, Keys::v_range, number, word.toString());
        else if (colours.size() == 3)
            readColourNames(colours, number, infos);
        else if (names.contains(word))
            readColourNames({word, word, word}, number, infos);
    }
}

} // namespace

QString ffAspectRatioStr(const QString &piece, AspectKind kind)
{
    const auto ratioAfter = [&piece](QStringView mark) {
        return textBefore(textBefore(textAfter(piece, mark), u" "), u"]").toString();
    };
    if (kind == AspectKind::display)
        return piece.contains(u"DAR ") ? ratioAfter(u"DAR ") : QString();
    for (const QStringView mark : {QStringView(u"PAR "), QStringView(u"SAR ")}) {
        if (piece.contains(mark))
            return ratioAfter(mark);
    }
    return {};
}

void readVideoLine(QStringView line, int number, Dico &infos)
{
    const double average = averageRate(line);
    for (const QStringView text : line.split(u", "))
        applyFirst(videoRules, {.text = text, .number = number, .averageRate = average}, infos);
    readColours(line, number, infos);
}

int quarterTurn(QStringView line)
{
    const QStringView mark = u"displaymatrix: rotation of ";
    const QStringView text = line.trimmed();
    if (!text.startsWith(mark))
        return 0;
    bool isNumber = false;
    const double counterclockwise = textBefore(text.sliced(mark.size()), u" ").toDouble(&isNumber);
    if (!isNumber || !(std::abs(counterclockwise) <= 360))
        return 0;
    const int quarters = int(std::lround(counterclockwise / 90));
    // ffmpeg's own tolerance for a turn in quarters is one degree.
    if (std::abs(counterclockwise - quarters * 90) > 1)
        return 0;
    return ((-quarters % 4 + 4) % 4) * 90;
}

void turnUpright(Dico &infos, int number, int clockwiseDegrees)
{
    write(infos, Keys::v_rotation, number, clockwiseDegrees);
    if (clockwiseDegrees == 180)
        return;
    const auto width = read(infos, Keys::v_width, number);
    const auto height = read(infos, Keys::v_height, number);
    if (width && height) {
        write(infos, Keys::v_width, number, *height);
        write(infos, Keys::v_height, number, *width);
    }
    for (const auto &key : {Keys::v_par, Keys::v_dar}) {
        const QStringList terms = read(infos, key, number).value_or(QString()).split(u':');
        if (terms.size() == 2)
            write(infos, key, number, terms.last() + u':' + terms.first());
    }
}

} // namespace vignar
