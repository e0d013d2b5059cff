#include "shell/colours.h"

namespace vignar
{

bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness() <
           palette.color(QPalette::WindowText).lightness();
}

QColor mixed(const QColor &first, const QColor &second, double share)
{
    const auto mix = [share](float one, float other) {
        return one + (other - one) * static_cast<float>(share);
    };
    return QColor::fromRgbF(mix(first.redF(), second.redF()), mix(first.greenF(), second.greenF()),
                            mix(first.blueF(), second.blueF()));
}

QColor secondaryText(const QPalette &palette)
{
    return mixed(palette.color(QPalette::Text), palette.color(QPalette::Base), 0.32);
}

QColor successColour(const QPalette &palette)
{
    return isDark(palette) ? QColor(0x57, 0xc7, 0x7a) : QColor(0x1a, 0x74, 0x38);
}

QColor failureColour(const QPalette &palette)
{
    return isDark(palette) ? QColor(0xff, 0x86, 0x7d) : QColor(0xb8, 0x1f, 0x2b);
}

QColor warningColour(const QPalette &palette)
{
    return isDark(palette) ? QColor(0xe8, 0xb3, 0x4b) : QColor(0x8a, 0x5a, 0x00);
}

} // namespace vignar
