#include "sheet/sheetPalette.h"

#include <cmath>

namespace vignar
{

namespace
{

constexpr double enoughContrast = 0.4;
constexpr double blendLevel = 0.4;
constexpr QColor gray(128, 128, 128);
constexpr QColor lightGray(170, 170, 170);

QColor blended(const QColor &colour, int target)
{
    const auto mixed = [target](int part) { return qRound(part + (target - part) * blendLevel); };
    return {mixed(colour.red()), mixed(colour.green()), mixed(colour.blue()), colour.alpha()};
}

/// The border for a page of the very same luminance.
QColor borderOnEqual(double pageLuminance)
{
    if (pageLuminance >= 0.9)
        return lightGray;
    return pageLuminance > 0.5 ? QColor(Qt::black) : QColor(Qt::white);
}

QColor contrastingBorder(const QColor &border, double pageLuminance)
{
    const double borderLuminance = luminance(border);
    if (std::abs(pageLuminance - borderLuminance) >= enoughContrast)
        return border;
    if (borderLuminance > pageLuminance)
        return blended(border, 255);
    if (borderLuminance < pageLuminance)
        return pageLuminance < 0.95 ? blended(border, 0) : gray;
    return borderOnEqual(pageLuminance);
}

} // namespace

double luminance(const QColor &colour)
{
    // Whole numbers until the last step: colours with equal sums must compare equal.
    const int sum = colour.red() + colour.green() + colour.blue();
    return colour.alpha() * sum / (255.0 * 3 * 255);
}

SheetPalette sheetPalette(const QColor &page, const QColor &border)
{
    const double pageLuminance = luminance(page);
    const QColor visible = contrastingBorder(border, pageLuminance);
    const bool isEqualOnLight = luminance(border) == pageLuminance && pageLuminance >= 0.9;
    return {page, visible, visible, isEqualOnLight ? gray : visible};
}

} // namespace vignar
