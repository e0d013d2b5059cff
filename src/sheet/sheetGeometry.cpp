#include "sheet/sheetGeometry.h"

#include "classShared/sourceDico.h"
#include "sheet/thumbnailPlan.h"

#include <algorithm>
#include <cmath>

namespace vignar
{

namespace
{

constexpr double titleFont = 36;
constexpr double infoFont = 16;
constexpr double creditFont = 14;
constexpr double smallestBorder = 5;
constexpr double labelColumn = 250;
constexpr double lineHeight = 1.5;
/// The large picture is as high as this many rows of the grid.
constexpr int mixRows = 4;
/// Right-hand margin of a timecode, in font sizes: digits centred in their line keep
/// the same distance from the lower edge.
constexpr double timecodeMargin = 0.5;

double timecodeFont(int layout)
{
    switch (layout) {
    case bigLayout:
        return 24;
    case medLayout:
        return 18;
    default:
        return 14;
    }
}

bool isMix(int layout)
{
    return layout != bigLayout && layout != medLayout && layout != minLayout;
}

/// A run of equal cells along one axis, cut at whole pixels.
struct Axis {
    double start;
    double step;
    int gap;

    int begin(int index) const { return qRound(start + index * step); }
    /// Derived from the next cell, so that every gap has the same width.
    int end(int index) const { return begin(index + 1) - gap; }
};

int frameThickness(const GeometryInput &input)
{
    const double exact = input.borderSize * input.scale;
    return exact > 0 ? std::max(1, qRound(exact)) : 0;
}

QRectF timecodePlace(const QRect &picture, double fontSize)
{
    const double height = lineHeight * fontSize;
    const double margin = timecodeMargin * fontSize;
    return {picture.x() + margin, picture.y() + picture.height() - height,
            picture.width() - 2 * margin, height};
}

CellPlace cellPlace(const Axis &columns, const Axis &rows, int column, int row, int thickness)
{
    const QRect frame(QPoint(columns.begin(column), rows.begin(row)),
                      QPoint(columns.end(column) - 1, rows.end(row) - 1));
    return {frame, frame.adjusted(thickness, thickness, -thickness, -thickness), {}};
}

void placeTexts(SheetGeometry &geometry, const GeometryInput &input)
{
    const double s = input.scale;
    const double width = geometry.page.width();
    geometry.titleSize = titleFont * s;
    geometry.infoSize = infoFont * s;
    geometry.creditSize = creditFont * s;
    geometry.timecodeSize = timecodeFont(input.layout) * s;

    const double titleHeight = lineHeight * geometry.titleSize;
    geometry.title = {geometry.border, 0, width - 2 * geometry.border, titleHeight};

    const double infoHeight = lineHeight * geometry.infoSize;
    const double valueX = labelColumn * s;
    for (int line = 0; line < input.infoLineCount; ++line) {
        const double y = titleHeight + line * infoHeight;
        geometry.infoLines.push_back({{0, y, valueX, infoHeight},
                                      {valueX, y, width - geometry.border - valueX, infoHeight}});
    }

    const double creditHeight = lineHeight * geometry.creditSize;
    geometry.credit = {0, geometry.page.height() - creditHeight, width, creditHeight};
}

/// Places the large picture and the grid; false when a picture has no room.
bool placePictures(SheetGeometry &geometry, const GeometryInput &input, double textBottom)
{
    const int columnCount = layoutGrid(input.layout).columns;
    const int gap = qRound(geometry.border);
    const double rowStep = geometry.cell.height() + geometry.border;
    const Axis columns{geometry.border, geometry.cell.width() + geometry.border, gap};
    Axis rows{textBottom + geometry.border, rowStep, gap};
    if (isMix(input.layout)) {
        geometry.mix = QRect(QPoint(columns.begin(0), rows.begin(0)),
                             QPoint(columns.end(columnCount - 1) - 1, rows.end(mixRows - 1) - 1));
        rows.start += mixRows * rowStep;
    }

    const int thickness = frameThickness(input);
    for (int index = 0; index < input.pictureCount; ++index) {
        CellPlace place =
            cellPlace(columns, rows, index % columnCount, index / columnCount, thickness);
        if (place.picture.isEmpty())
            return false;
        place.timecode = timecodePlace(place.picture, geometry.timecodeSize);
        geometry.cells.push_back(place);
    }
    return true;
}

/// Lays a sheet out as far as it fits.
SheetFit layOut(SheetGeometry &geometry, const GeometryInput &input)
{
    using Verdict = SheetFit::Verdict;
    const double s = input.scale;
    const double width = basePageWidth * s;
    const int columns = layoutGrid(input.layout).columns;
    const int rows = (input.pictureCount + columns - 1) / columns;

    geometry.border = std::max(std::trunc(input.borderSize * s), smallestBorder * s);
    const double cellWidth = (width - (columns + 1) * geometry.border) / columns;
    const double cellHeight =
        cellWidth / input.thumbnailSize.width() * input.thumbnailSize.height();
    // Also refuses the infinite and undefined sizes that senseless inputs lead to.
    if (!(cellWidth >= 1 && cellHeight > 0))
        return {Verdict::noRoom, {}};
    geometry.cell = {cellWidth, cellHeight};

    const double textBottom = lineHeight * s * (titleFont + input.infoLineCount * infoFont);
    const int pictureRows = rows + (isMix(input.layout) ? mixRows : 0);
    const double height =
        textBottom + pictureRows * (cellHeight + geometry.border) + lineHeight * s * creditFont;
    const QSizeF page(width, height);
    if (!(std::max(width, height) <= input.largestSide && width * height <= input.largestArea))
        return {Verdict::tooLarge, page};

    geometry.page = {qRound(width), static_cast<int>(height)};
    placeTexts(geometry, input);
    return {placePictures(geometry, input, textBottom) ? Verdict::fits : Verdict::noRoom, page};
}

} // namespace

SheetFit sheetFit(const GeometryInput &input)
{
    SheetGeometry geometry;
    return layOut(geometry, input);
}

std::optional<SheetGeometry> sheetGeometry(const GeometryInput &input)
{
    SheetGeometry geometry;
    if (layOut(geometry, input).verdict != SheetFit::Verdict::fits)
        return std::nullopt;
    return geometry;
}

} // namespace vignar
