#pragma once

#include <QPalette>

namespace vignar
{

/// Colours derived from the palette in use, so that light and dark desktops both get
/// enough contrast.
bool isDark(const QPalette &palette);
/// share 0 gives the first colour, 1 the second.
QColor mixed(const QColor &first, const QColor &second, double share);
/// For words of less weight: at least 4.5 to 1 against the usual bases.
QColor secondaryText(const QPalette &palette);
QColor successColour(const QPalette &palette);
QColor failureColour(const QPalette &palette);
QColor warningColour(const QPalette &palette);

} // namespace vignar
