#pragma once

#include <QColor>

namespace vignar
{

/// The colours of a sheet.
struct SheetPalette {
    QColor page;
    QColor border;
    QColor titleText;
    QColor infoText;
};

/// Alpha times the mean of red, green and blue, 0 … 1.
double luminance(const QColor &colour);

/// The colours asked for, the border made to stand out from the page where it does not;
/// the texts follow the border.
SheetPalette sheetPalette(const QColor &page, const QColor &border);

} // namespace vignar
