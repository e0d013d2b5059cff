#pragma once

#include "sheet/pictureFormats.h"

#include <QRectF>
#include <QSize>

#include <limits>
#include <optional>
#include <vector>

namespace vignar
{

/// Largest side of a PDF page, 14400 points, at 250 dpi.
inline constexpr int largestPdfSide = 50000;
/// Page width at scale 1, in pixels.
inline constexpr int basePageWidth = 1280;
/// Pixels of the largest page that is drawn, which takes a gibibyte of memory.
inline constexpr qint64 largestPageArea = qint64(1) << 28;

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
    qint64 largestArea = std::numeric_limits<qint64>::max();
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

/// Whether a sheet can be laid out, and if not, why.
struct SheetFit {
    enum class Verdict {
        fits,
        /// The frames leave no room for a picture.
        noRoom,
        /// A side of the page, or the page itself, would exceed the largest.
        tooLarge
    };

    Verdict verdict = Verdict::fits;
    /// What the page would measure; not known where there is no room.
    QSizeF page;
};

SheetFit sheetFit(const GeometryInput &input);

/// Lays a sheet out; nothing where it does not fit.
std::optional<SheetGeometry> sheetGeometry(const GeometryInput &input);

} // namespace vignar
