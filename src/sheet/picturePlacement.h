#pragma once

#include <QImage>
#include <QSize>

namespace vignar
{

/// How a picture is placed in a target of another shape. The negative modes share the
/// scale rule of the positive ones, and their centring.
enum class Placement { stretch = 0, fit = 1, cover = 2, fitCentred = -1, coverCentred = -2 };

/// True for the number of a Placement.
constexpr bool isPlacement(int mode)
{
    return mode >= -2 && mode <= 2;
}

/// A picture redrawn at width × height pixels and dpi (0 or less: 72), its colours named
/// sRGB. keepsTransparency leaves uncovered pixels transparent, else they are black. Null
/// for a null source and for a size that no memory holds.
QImage rescaled(const QImage &source, const QSize &size, double dpi, Placement placement,
                bool keepsTransparency);

/// Sets the resolution that a file of the picture states; 0 or less: 72.
void setDpi(QImage &image, double dpi);

} // namespace vignar
