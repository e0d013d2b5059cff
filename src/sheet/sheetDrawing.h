#pragma once

#include "classShared/sourceDico.h"
#include "sheet/sheetPainter.h"

namespace vignar
{

/// The colours that a display dictionary asks for, or else the preferences.
struct SheetColours {
    QColor page;
    QColor border;
};
SheetColours sheetColours(const Dico &display);

/// A sheet laid out: all that is left is to draw it, on a picture, a page or a window.
struct SheetDrawing {
    SheetContent content;
    SheetGeometry geometry;
    SheetPalette palette;

    /// The page's top left corner comes to the painter's origin, a pixel of the geometry
    /// to one unit of the painter.
    void draw(QPainter &painter, const SheetPictures &pictures) const;
};

/// What a display dictionary and as many pictures make of a page, at a scale over
/// basePageWidth, whose sides have at most so many pixels.
GeometryInput geometryInput(const Dico &display, int pictureCount, double scale, int largestSide);

/// Lays the sheet of a display dictionary out; nothing where it does not fit.
std::optional<SheetDrawing> sheetDrawing(const Dico &display, int pictureCount, double scale,
                                         int largestSide);

} // namespace vignar
