#include "sheet/imageExport.h"

#include "classShared/lineLog.h"
#include "sheet/pdfPage.h"

#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>
#include <QSaveFile>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

constexpr double defaultDpi = 72;
constexpr double metresPerInch = 0.0254;
constexpr double defaultFactor = 0.9;
/// Enough for 25,000 × 20,000 pixels, and an end to what a forged header could ask for.
constexpr int largestPictureMegabytes = 2048;

struct ExportFormat {
    QLatin1String extension;
    const char *codec;
    bool keepsTransparency;
};

constexpr ExportFormat jpegFormat{QLatin1String("jpg"), "jpeg", false};
constexpr std::array<ExportFormat, 8> exportFormats{{
    {QLatin1String("tif"), "tiff", true},
    {QLatin1String("tiff"), "tiff", true},
    {QLatin1String("bmp"), "bmp", false},
    {QLatin1String("gif"), "gif", true},
    {QLatin1String("png"), "png", true},
    {QLatin1String("jp2"), "jp2", true},
    {QLatin1String("jpx"), "jp2", true},
    {QLatin1String("pdf"), "pdf", false},
}};

ExportFormat exportFormat(const QString &path)
{
    const QString extension = QFileInfo(path).suffix().toLower();
    const auto found =
        std::find_if(exportFormats.begin(), exportFormats.end(),
                     [&](const ExportFormat &format) { return extension == format.extension; });
    return found == exportFormats.end() ? jpegFormat : *found;
}

QString mood(bool isSuccess)
{
    return isSuccess ? u")"_s : u"("_s;
}

void setDpi(QImage &image, double dpi)
{
    const int dotsPerMeter = qRound((dpi > 0 ? dpi : defaultDpi) / metresPerInch);
    image.setDotsPerMeterX(dotsPerMeter);
    image.setDotsPerMeterY(dotsPerMeter);
}

/// A picture and where it goes in the target.
struct PlacedPiece {
    QImage picture;
    QPoint position;
};

QImage stretched(const QImage &source, const QSize &size)
{
    return source.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

/// A quotient cut to whole pixels, without losing one to an inexact division.
int wholePixels(double length)
{
    return std::max(1, static_cast<int>(length + 1e-6));
}

PlacedPiece fitted(const QImage &source, const QSize &target)
{
    const double f = std::max(double(source.width()) / target.width(),
                              double(source.height()) / target.height());
    const QSize size(wholePixels(source.width() / f), wholePixels(source.height() / f));
    const QPoint position((target.width() - size.width()) / 2,
                          (target.height() - size.height()) / 2);
    logVerbose(u"f=%f, src = %ld x %ld -> dst = %ld x %ld", f, source.width(), source.height(),
               size.width(), size.height());
    logLine(u"%ld:%ld:%ld:%ld", position.x(), position.y(), size.width(), size.height());
    return {stretched(source, size), position};
}

/// Cuts the overflow off before scaling, so that an extreme shape needs no extreme
/// amount of memory.
PlacedPiece covering(const QImage &source, const QSize &target)
{
    const double f = std::min(double(source.width()) / target.width(),
                              double(source.height()) / target.height());
    const QSize scaled(wholePixels(source.width() / f), wholePixels(source.height() / f));
    logVerbose(u"f=%f, src = %ld x %ld -> dst = %ld x %ld", f, source.width(), source.height(),
               scaled.width(), scaled.height());
    QRect visible({}, QSize(wholePixels(target.width() * f), wholePixels(target.height() * f)));
    visible.moveTo((source.width() - visible.width()) / 2,
                   (source.height() - visible.height()) / 2);
    logLine(u"dstOffset=%.0f:%.0f (dst=%ld*%ld) -> srcOffset=%ld:%ld (src=%ld*%ld)",
            (scaled.width() - target.width()) / 2.0, (scaled.height() - target.height()) / 2.0,
            target.width(), target.height(), visible.x(), visible.y(), source.width(),
            source.height());
    return {stretched(source.copy(visible), target), {}};
}

PlacedPiece placed(const QImage &source, const QSize &target, Placement placement)
{
    switch (placement) {
    case Placement::fit:
    case Placement::fitCentred:
        return fitted(source, target);
    case Placement::cover:
    case Placement::coverCentred:
        return covering(source, target);
    case Placement::stretch:
        break;
    }
    return {stretched(source, target), {}};
}

bool writePicture(const QImage &bitmap, const QString &path, const ExportFormat &format,
                  double compressionFactor)
{
    // Asked first: a format that cannot be written must not touch the file's place.
    if (!QImageWriter::supportedImageFormats().contains(format.codec)) {
        logLine(u"imgExport           :-( no codec '%@' for '%@'",
                QString::fromLatin1(format.codec), path);
        return false;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QImageWriter writer(&file, format.codec);
    if (QLatin1String(format.codec) == QLatin1String(jpegFormat.codec))
        writer.setQuality(jpegQuality(compressionFactor));
    // commit() alone overlooks a last buffer that could not be written.
    return writer.write(bitmap) && file.flush() && file.commit();
}

bool writePdf(const QImage &bitmap, const QString &path)
{
    const double dpi = bitmap.dotsPerMeterX() * metresPerInch;
    const bool isSuccess =
        writePdfPage(path, {bitmap.size(), dpi > 0 ? dpi : defaultDpi, {}}, [&](QPainter &painter) {
            painter.drawImage(QRect({}, bitmap.size()), bitmap);
        });
    logLine(u"imgSaveAs…pdf       :-%@ '%@'", mood(isSuccess), path);
    return isSuccess;
}

bool isPlacement(int mode)
{
    return mode >= -2 && mode <= 2;
}

bool placeAndExport(const QImage &source, const QString &destination, const QSize &size, double dpi,
                    int mode, double compressionFactor)
{
    if (source.isNull() || size.isEmpty() || !isPlacement(mode))
        return false;
    const QImage bitmap = rescaled(source, size, dpi, static_cast<Placement>(mode),
                                   exportFormat(destination).keepsTransparency);
    return imgExport(bitmap, destination, compressionFactor);
}

} // namespace

std::optional<QSize> imgSizes(const QString &path)
{
    const bool exists = QFileInfo::exists(path);
    logLine(u"imgSizes - deb  : %@ = %d", path, exists);
    if (!exists)
        return std::nullopt;
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    const QSize size = reader.canRead() ? reader.size() : QSize();
    if (size.isEmpty())
        return std::nullopt;
    return size;
}

QImage loadedPicture(const QString &path, const QSize &size)
{
    static const bool isLimitRaised = [] {
        QImageReader::setAllocationLimit(largestPictureMegabytes);
        return true;
    }();
    Q_UNUSED(isLimitRaised)
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    if (!size.isEmpty())
        reader.setScaledSize(size);
    return reader.read();
}

QImage rescaled(const QImage &source, const QSize &size, double dpi, Placement placement,
                bool keepsTransparency)
{
    logVerbose(u"img size : %ld x %ld", source.width(), source.height());
    QImage target(size, QImage::Format_ARGB32_Premultiplied);
    if (target.isNull() || source.isNull())
        return {};
    target.fill(keepsTransparency ? Qt::transparent : Qt::black);
    const PlacedPiece piece = placed(source, size, placement);
    QPainter(&target).drawImage(piece.position, piece.picture);
    setDpi(target, dpi);
    return target;
}

qint64 bitmapBytesPerRow(int width)
{
    return qint64(32) * width;
}

int jpegQuality(double compressionFactor)
{
    const bool isFactor = compressionFactor > 0 && compressionFactor <= 1;
    return std::max(1, qRound(100 * (isFactor ? compressionFactor : defaultFactor)));
}

bool imgExport(const QImage &bitmap, const QString &path, double compressionFactor)
{
    if (bitmap.isNull())
        return false;
    const ExportFormat format = exportFormat(path);
    const bool isPdf = format.extension == QLatin1String("pdf");
    const bool isSuccess =
        isPdf ? writePdf(bitmap, path) : writePicture(bitmap, path, format, compressionFactor);
    logVerbose(u"imgExport - end");
    return isSuccess;
}

bool imgRescale(const QString &source, const QString &destination, int width, int height,
                double dpi, int mode, double compressionFactor)
{
    logLine(u"imgRescale          - deb, srcPathStrOrImg = path ? %d, image ? %d", 1, 0);
    if (!QFileInfo::exists(source)) {
        logLine(u"imgRescale src path :-%@ %@", mood(false), source);
        return false;
    }
    const bool isSuccess = placeAndExport(loadedPicture(source), destination, {width, height}, dpi,
                                          mode, compressionFactor);
    logLine(u"imgRescale          :-%@ modeInt=%ld", mood(isSuccess), mode);
    return isSuccess;
}

bool imgRescale(const QImage &source, const QString &destination, int width, int height, double dpi,
                int mode, double compressionFactor)
{
    logLine(u"imgRescale          - deb, srcPathStrOrImg = path ? %d, image ? %d", 0, 1);
    const bool isSuccess =
        placeAndExport(source, destination, {width, height}, dpi, mode, compressionFactor);
    logLine(u"imgRescale          :-%@ modeInt=%ld", mood(isSuccess), mode);
    return isSuccess;
}

bool writeSwatch(const QColor &colour, const QString &destination, int width, int height)
{
    QImage swatch(100, 100, QImage::Format_ARGB32_Premultiplied);
    swatch.fill(colour);
    return imgRescale(swatch, destination, width, height, defaultDpi, 0, 1.0);
}

} // namespace vignar
