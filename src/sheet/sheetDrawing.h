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

/// Lays the sheet of a display dictionary out for as many pictures, at a scale over
/// basePageWidth; nothing when the frames leave no room for a picture or a side would
/// exceed the largest, in pixels.
std::optional<SheetDrawing> sheetDrawing(const Dico &display, int pictureCount, double scale,
                                         int largestSide);

} // namespace vignar
