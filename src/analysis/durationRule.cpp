#include "analysis/durationRule.h"

#include "analysis/mediaClasses.h"
#include "analysis/reportText.h"
#include "classShared/lineLog.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace vignar
{
namespace
{

/// Seconds by which two readers may differ on the same duration.
constexpr double sameDuration = 2.0;

/// Files below this many kilobytes are read through; larger ones take too long.
constexpr double measurableWithDemultiplexer = 512000;
constexpr double measurable = 153600;
/// The most that a DVD carries, in kb/s. A stated bit rate above it comes from a duration that
/// is too short: ffmpeg divides the size by the duration.
constexpr double highestDvdBitrate = 10080;
constexpr double bitsPerByte = 8;

/// Bits a pixel below which the duration of a transport stream is doubted.
constexpr double leastBitsPerPixel = 0.01;

/// A recording file is a small property list; more of it is not looked at.
constexpr qint64 recordingLimit = 1024 * 1024;

/// The path up to and with the recording bundle that it leads through; null: none.
QString recordingBundle(const QString &srcPath)
{
    const QStringList components = QDir::cleanPath(srcPath).split(u'/');
    for (qsizetype i = 0; i < components.size(); ++i) {
        const QString &name = components.at(i);
        if (name.endsWith(u".eyetv"_s, Qt::CaseInsensitive) ||
            name.endsWith(u".eyetvsched"_s, Qt::CaseInsensitive))
            return components.first(i + 1).join(u'/');
    }
    return {};
}

} // namespace

QVariant reconciledDuration(const DurationClaims &claims, const QString &extension)
{
    if (claims.mp.isValid())
        return claims.mp;
    if (!claims.qt.isValid() || !claims.ff.isValid())
        return claims.ff.isValid() ? claims.ff : claims.qt;
    const double difference = std::abs(claims.qt.toDouble() - claims.ff.toDouble());
    const bool isQtRight = difference < sameDuration || isFfmpegDoubtfulExtension(extension);
    return isQtRight ? claims.qt : claims.ff;
}

std::optional<int> bundleDuration(const QString &srcPath)
{
    const QString bundle = recordingBundle(srcPath);
    if (bundle.isNull())
        return std::nullopt;
    const QDir folder(bundle);
    for (const QString &name : folder.entryList({u"*.eyetvr"_s}, QDir::Files, QDir::Name)) {
        QFile recording(folder.filePath(name));
        if (!recording.open(QIODevice::ReadOnly))
            continue;
        if (const auto seconds =
                recordedDuration(QString::fromUtf8(recording.read(recordingLimit))))
            return seconds;
    }
    return std::nullopt;
}

std::optional<int> recordedDuration(const QString &recording)
{
    // Property lists are often indented: blanks between the two elements do not count.
    const QStringView value = textAfter(recording, u"<key>actual duration</key>").trimmed();
    if (!value.startsWith(u"<real>") || !value.contains(u"</real>"))
        return std::nullopt;
    const double seconds = textBefore(value.sliced(6), u"</real>").trimmed().toDouble();
    if (!(seconds >= 1) || seconds > std::numeric_limits<int>::max())
        return std::nullopt;
    return int(seconds);
}

CheckedDuration checkedDvdDuration(double seconds, const DvdFile &file)
{
    const double limit = file.hasMpeg2Demultiplexer ? measurableWithDemultiplexer : measurable;
    if (file.kilobytes < limit) {
        const int measured = file.measure ? file.measure() : 0;
        return {.seconds = measured > 1 ? measured : seconds};
    }
    // At its highest rate the file lasts at least so long; the average is about half that rate.
    const double estimate = std::trunc(bitsPerByte * file.kilobytes / highestDvdBitrate);
    const bool isPossible = file.bitrate > 0 && file.bitrate <= highestDvdBitrate;
    if (!isPossible && estimate > seconds)
        return {.seconds = 2 * estimate, .isTimecodeBroken = true};
    return {.seconds = seconds};
}

double checkedTransportDuration(double seconds, const TransportStream &stream)
{
    const double pixels = seconds * stream.fps * stream.size.width() * stream.size.height();
    const bool isDoubtful = pixels > 0 && 8.0 * double(stream.bytes) < leastBitsPerPixel * pixels;
    if (!isDoubtful || !stream.measure || stream.bytes > mostMeasuredBytes)
        return seconds;
    const int measured = stream.measure();
    return measured > 1 && seconds - measured >= sameDuration ? measured : seconds;
}

} // namespace vignar
