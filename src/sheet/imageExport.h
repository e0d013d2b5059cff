#pragma once

#include <QColor>
#include <QImage>
#include <QSize>
#include <QString>

#include <optional>

namespace vignar
{

/// How a picture is placed in a target of another shape. The negative modes share the
/// scale rule of the positive ones, and their centring.
enum class Placement { stretch = 0, fit = 1, cover = 2, fitCentred = -1, coverCentred = -2 };

/// Pixel size of a picture file; nothing when it does not load as a picture.
std::optional<QSize> imgSizes(const QString &path);

/// A picture file, averaged down while it is decoded where a size is given; null when it
/// does not load.
QImage loadedPicture(const QString &path, const QSize &size = {});

/// A picture redrawn at width × height pixels and dpi (0 or less: 72). keepsTransparency
/// leaves uncovered pixels transparent, else they are black.
QImage rescaled(const QImage &source, const QSize &size, double dpi, Placement placement,
                bool keepsTransparency);

/// Bytes in a row of the bitmap object, which keeps eight times the packed stride. Only
/// the number is kept: nothing reads the bytes, so no memory holds them.
qint64 bitmapBytesPerRow(int width);

/// JPEG quality, 1 … 100, of a compression factor: within (0, 1], else 0.9.
int jpegQuality(double compressionFactor);

/// Writes a picture in the format of the extension, whatever its case (unknown: JPEG),
/// beside its final name and renamed over it. False also for a format that no installed
/// codec writes; never are data of another format written under its name.
bool imgExport(const QImage &bitmap, const QString &path, double compressionFactor);

/// Loads, places and exports; false for an unreadable source or a mode outside -2 … 2.
bool imgRescale(const QString &source, const QString &destination, int width, int height,
                double dpi, int mode, double compressionFactor);
bool imgRescale(const QImage &source, const QString &destination, int width, int height, double dpi,
                int mode, double compressionFactor);

/// Writes a picture of one colour.
bool writeSwatch(const QColor &colour, const QString &destination, int width, int height);

} // namespace vignar
