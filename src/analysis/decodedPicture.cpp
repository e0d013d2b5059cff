#include "analysis/decodedPicture.h"

#include "analysis/ffReportStreams.h"
#include "analysis/reportText.h"
#include "classShared/sourceDico.h"

#include <QRegularExpression>

#include <array>
#include <numeric>

using namespace Qt::StringLiterals;

namespace vignar
{
namespace
{

/// A rate above this is that of a clock.
constexpr double highestRate = 120;

/// The pictures that ffmpeg writes, as the report's last output block describes them.
Dico describedOutput(const QStringList &lines)
{
    Dico output;
    bool isOutput = false;
    for (const QString &line : lines) {
        if (line.startsWith(u"Output #") || line.startsWith(u"Input #"))
            isOutput = line.startsWith(u"Output #");
        else if (isOutput && streamType(line) == StreamType::video && output.isEmpty())
            readVideoLine(line, 0, output);
    }
    return output;
}

/// The pixel format that the decoder hands over, before it is converted.
QString decodedPixelFormat(const QStringList &lines)
{
    static const QRegularExpression format(
        u"^\\[graph .* w:\\d+ h:\\d+ pixfmt:([a-z][a-z0-9_]*) "_s);
    for (const QString &line : lines) {
        if (const QRegularExpressionMatch match = format.match(line); match.hasMatch())
            return match.captured(1);
    }
    return {};
}

QString displayAspect(const QSize &size, const QString &par)
{
    const qint64 width = size.width() * par.section(u':', 0, 0).toLongLong();
    const qint64 height = size.height() * par.section(u':', 1, 1).toLongLong();
    const qint64 divisor = std::max<qint64>(1, std::gcd(width, height));
    return u"%1:%2"_s.arg(width / divisor).arg(height / divisor);
}

/// Either the header's description or, without one, that of the report's output.
DecodedPicture known(const DecodedPicture &picture, const Dico &output)
{
    if (!picture.size.isEmpty())
        return picture;
    return {.size = {read(output, Keys::v_width, 0).value_or(0),
                     read(output, Keys::v_height, 0).value_or(0)},
            .par = read(output, Keys::v_par, 0).value_or(QString())};
}

void completeColours(Dico &infos, const QStringList &lines, const Dico &output)
{
    if (const QString format = decodedPixelFormat(lines); !format.isNull()) {
        write(infos, Keys::v_pixelFormat, 0, format);
        write(infos, Keys::v_chroma, 0, format);
    }
    // The range is not taken: the conversion for the output may have changed it.
    for (const auto &key : {Keys::v_matrix, Keys::v_primaries, Keys::v_transfer}) {
        if (const auto colour = read(output, key, 0))
            write(infos, key, 0, *colour);
    }
}

} // namespace

DecodedPicture decodedPictureOf(const QString &header)
{
    static const QRegularExpression form(
        u"^YUV4MPEG2 W(\\d{1,6}) H(\\d{1,6})(?: F(\\d{1,9}):(\\d{1,9}))?"
        "(?: I.)?(?: A(\\d{1,9}):(\\d{1,9}))?"_s);
    const QRegularExpressionMatch match = form.match(header);
    DecodedPicture picture;
    picture.size = {match.captured(1).toInt(), match.captured(2).toInt()};
    if (match.captured(5).toInt() > 0 && match.captured(6).toInt() > 0)
        picture.par = match.captured(5) + u':' + match.captured(6);
    if (const double scale = match.captured(4).toDouble(); scale > 0)
        picture.fps = match.captured(3).toDouble() / scale;
    return picture;
}

void completeFromDecoded(Dico &infos, const DecodedPicture &picture, const QString &report)
{
    const bool isStated = infos.contains(Keys::v_width(0)) && infos.contains(Keys::v_height(0));
    if (isStated || !infos.contains(Keys::v_codec(0)))
        return;
    const QStringList lines = reportLines(report);
    const Dico output = describedOutput(lines);
    const DecodedPicture decoded = known(picture, output);
    if (decoded.size.isEmpty())
        return;
    write(infos, Keys::v_width, 0, decoded.size.width());
    write(infos, Keys::v_height, 0, decoded.size.height());
    if (!decoded.par.isEmpty()) {
        write(infos, Keys::v_par, 0, decoded.par);
        write(infos, Keys::v_dar, 0, displayAspect(decoded.size, decoded.par));
    }
    if (!infos.contains(Keys::v_fps(0)) && decoded.fps > 0 && decoded.fps <= highestRate)
        write(infos, Keys::v_fps, 0, decoded.fps);
    if (!infos.contains(Keys::v_pixelFormat(0)))
        completeColours(infos, lines, output);
}

} // namespace vignar
