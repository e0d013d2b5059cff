#pragma once

#include "classShared/result.h"
#include "classShared/wholeFile.h"
#include "sheet/pictureFormats.h"
#include "sheet/pictureMetadata.h"

#include <QColor>
#include <QImage>
#include <QSize>
#include <QString>

#include <optional>

namespace vignar
{

/// Pixel size of a picture file; nothing when it does not load as a picture. Where the
/// format tells the size in its header, only that is read.
std::optional<QSize> imgSizes(const QString &path);

/// A picture file, averaged down while it is decoded where a size is given; null when it
/// does not load. Without a size up to 2 GiB of pixels are loaded.
QImage loadedPicture(const QString &path, const QSize &size = {});

/// Bytes in a row of the bitmap object, which keeps eight times the packed stride. Only
/// the number is kept: nothing reads the bytes, so no memory holds them.
qint64 bitmapBytesPerRow(int width);

/// JPEG quality, 1 … 100, of a compression factor: within (0, 1], else 0.9.
int jpegQuality(double compressionFactor);

/// Encodes a picture, then has it written. quality: 0 … 100, -1 leaves it to the codec.
/// Metadata that cannot be added is logged and left out; texts that the picture carries
/// itself never reach the file. The reason of a failure is meant for the log: no codec, a
/// side longer than the format allows, or the writer's own. The file that was there is then
/// unchanged.
Result<void> writePicture(const QImage &bitmap, const QString &path, const PictureFormat &format,
                          int quality = -1, const PictureMetadata &metadata = {},
                          const FileWriter &write = writeOver);

/// Writes a picture in the format of the extension, whatever its case (unknown: JPEG), over
/// whatever bears the name.
/// False also for a format that no installed codec writes; never are data of another
/// format written under its name.
bool imgExport(const QImage &bitmap, const QString &path, double compressionFactor);

/// Loads, places and exports; false for an unreadable source or a mode outside -2 … 2.
bool imgRescale(const QString &source, const QString &destination, int width, int height,
                double dpi, int mode, double compressionFactor);
bool imgRescale(const QImage &source, const QString &destination, int width, int height, double dpi,
                int mode, double compressionFactor);

/// Writes a picture of one colour.
bool writeSwatch(const QColor &colour, const QString &destination, int width, int height);

} // namespace vignar
