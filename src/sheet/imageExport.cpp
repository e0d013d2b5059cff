#include "sheet/imageExport.h"

#include "classShared/lineLog.h"
#include "sheet/jpegReading.h"
#include "sheet/pdfPage.h"
#include "sheet/picturePlacement.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

constexpr double swatchDpi = 72;
constexpr double metresPerInch = 0.0254;
constexpr double defaultFactor = 0.9;
/// Enough for 25,000 × 20,000 pixels, and an end to what a forged header could ask for.
constexpr int largestPictureMegabytes = 2048;

QString mood(bool isSuccess)
{
    return isSuccess ? u")"_s : u"("_s;
}

/// Made ready to read a picture file by its content.
void openReader(QImageReader &reader, const QString &path)
{
    static const bool isLimitRaised = [] {
        QImageReader::setAllocationLimit(largestPictureMegabytes);
        return true;
    }();
    Q_UNUSED(isLimitRaised)
    prepareReading(path);
    reader.setFileName(path);
    reader.setDecideFormatFromContent(true);
}

/// Writers would put the texts into a comment, where software and paths of elsewhere show.
QImage withoutTexts(const QImage &bitmap)
{
    QImage bare = bitmap;
    const QStringList keys = bitmap.textKeys();
    for (const QString &key : keys)
        bare.setText(key, {});
    return bare;
}

Result<QByteArray> encoded(const QImage &bitmap, const PictureFormat &format, int quality)
{
    const int longest = std::max(bitmap.width(), bitmap.height());
    if (format.largestSide > 0 && longest > format.largestSide)
        return Failure{filled(u"%ld pixels a side are more than the %ld of %@", longest,
                              format.largestSide, QString::fromLatin1(format.codec))};
    if (!canWriteCodec(format.codec))
        return Failure{filled(u"no codec '%@'", QString::fromLatin1(format.codec))};
    QBuffer buffer;
    QImageWriter writer(&buffer, format.codec);
    writer.setQuality(quality);
    if (!writer.write(withoutTexts(bitmap)))
        return Failure{writer.errorString()};
    return buffer.data();
}

QByteArray finished(const QByteArray &picture, const PictureMetadata &metadata)
{
    if (metadata.isEmpty())
        return picture;
    Result<QByteArray> complete = withMetadata(picture, metadata);
    if (complete)
        return *complete;
    logLine(u"metadata            :-( %@", complete.reason());
    return picture;
}

bool writePdf(const QImage &bitmap, const QString &path)
{
    const double dpi = bitmap.dotsPerMeterX() * metresPerInch;
    const bool isSuccess =
        writePdfPage(path, {bitmap.size(), dpi > 0 ? dpi : swatchDpi, {}}, [&](QPainter &painter) {
            painter.drawImage(QRect({}, bitmap.size()), bitmap);
        });
    logLine(u"imgSaveAs…pdf       :-%@ '%@'", mood(isSuccess), path);
    return isSuccess;
}

bool writeByExtension(const QImage &bitmap, const QString &path, double compressionFactor)
{
    const PictureFormat &format = formatOfExtension(path);
    const bool isJpeg = &format == &jpegFormat;
    const Result<void> written =
        writePicture(bitmap, path, format, isJpeg ? jpegQuality(compressionFactor) : -1);
    if (!written)
        logLine(u"imgExport           :-( '%@' %@", path, written.reason());
    return bool(written);
}

bool keepsTransparency(const QString &path)
{
    return !isPdfExtension(path) && formatOfExtension(path).keepsTransparency;
}

bool placeAndExport(const QImage &source, const QString &destination, const QSize &size, double dpi,
                    int mode, double compressionFactor)
{
    if (source.isNull() || size.isEmpty() || !isPlacement(mode))
        return false;
    const QImage bitmap =
        rescaled(source, size, dpi, static_cast<Placement>(mode), keepsTransparency(destination));
    return imgExport(bitmap, destination, compressionFactor);
}

} // namespace

std::optional<QSize> imgSizes(const QString &path)
{
    const bool exists = QFileInfo::exists(path);
    logLine(u"imgSizes - deb  : %@ = %d", path, exists);
    if (!exists)
        return std::nullopt;
    QImageReader reader;
    openReader(reader, path);
    const bool isSizeTold = reader.supportsOption(QImageIOHandler::Size);
    const QSize size = isSizeTold ? reader.size() : reader.read().size();
    if (size.isEmpty())
        return std::nullopt;
    return size;
}

QImage loadedPicture(const QString &path, const QSize &size)
{
    const QImage jpeg = jpegPicture(path, size);
    if (!jpeg.isNull())
        return jpeg;
    QImageReader reader;
    openReader(reader, path);
    if (!size.isEmpty())
        reader.setScaledSize(size);
    return reader.read();
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

Result<void> writePicture(const QImage &bitmap, const QString &path, const PictureFormat &format,
                          int quality, const PictureMetadata &metadata, const FileWriter &write)
{
    // Encoded first: what cannot be written must not touch the file's place.
    const Result<QByteArray> picture = encoded(bitmap, format, quality);
    if (!picture)
        return Failure{picture.reason()};
    const WriteEnd end = write(path, finished(*picture, metadata));
    return end ? Result<void>() : Failure{end.reason()};
}

bool imgExport(const QImage &bitmap, const QString &path, double compressionFactor)
{
    if (bitmap.isNull())
        return false;
    const bool isSuccess = isPdfExtension(path) ? writePdf(bitmap, path)
                                                : writeByExtension(bitmap, path, compressionFactor);
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
    return imgRescale(swatch, destination, width, height, swatchDpi, 0, 1.0);
}

} // namespace vignar
