#pragma once

#include "sheet/pictureFormats.h"

#include <QRectF>
#include <QSize>

#include <optional>
#include <vector>

namespace vignar
{

/// Largest side of a PDF page, 14400 points, at 250 dpi.
inline constexpr int largestPdfSide = 50000;
/// Page width at scale 1, in pixels.
inline constexpr int basePageWidth = 1280;

/// What decides where everything on a sheet is.
struct GeometryInput {
    /// A Layout; any index but 0, 1 and 2 is Mix.
    int layout = 0;
    int pictureCount = 0;
    /// Size of an extracted picture, its pixels square.
    QSize thumbnailSize;
    /// Frame thickness in pixels at scale 1.
    double borderSize = 0;
    /// Page width over basePageWidth.
    double scale = 1;
    int infoLineCount = 0;
    int largestSide = jpegFormat.largestSide;
};

/// One info line: its name, right-aligned, and what stands after it.
struct InfoLinePlace {
    QRectF label;
    QRectF value;
};

/// One picture of the grid.
struct CellPlace {
    QRect frame;
    QRect picture;
    QRectF timecode;
};

/// Every rectangle of a sheet in pixels, origin top left. Frames and pictures lie on
/// whole pixels with the same gap between any two, so that columns may differ by a
/// pixel in width; texts need no snapping.
struct SheetGeometry {
    QSize page;
    /// Gap between cells, before it is rounded to pixels.
    double border = 0;
    /// Size of a cell, before it is rounded to pixels.
    QSizeF cell;
    QRectF title;
    std::vector<InfoLinePlace> infoLines;
    /// The large picture of the Mix layout, else empty.
    QRect mix;
    /// One a picture, row by row.
    std::vector<CellPlace> cells;
    QRectF credit;

    /// Font sizes in pixels.
    double titleSize = 0;
    double infoSize = 0;
    double creditSize = 0;
    double timecodeSize = 0;
};

/// Lays a sheet out; nothing when the frames leave no room for a picture or a side would
/// exceed the largest.
std::optional<SheetGeometry> sheetGeometry(const GeometryInput &input);

} // namespace vignar
