#pragma once

#include "classShared/keys.h"
#include "sheet/sheetGeometry.h"
#include "sheet/sheetPalette.h"

#include <QPainter>

#include <vector>

namespace vignar
{

class SheetPictures;
struct TextStyle;

/// What stands on a sheet.
struct SheetContent {
    struct InfoLine {
        QString label;
        QString value;
    };

    QString title;
    std::vector<InfoLine> infoLines;
    /// Picture index as text to its timecode.
    Dico timecodes;
    /// Empty: no credit line.
    QString credit;
};

/// Fills the rectangles of a sheet in, on a picture or a page of a document. Holds one
/// picture at a time. What it is given must outlive it.
class SheetPainter
{
public:
    SheetPainter(const SheetContent &content, const SheetGeometry &geometry,
                 const SheetPalette &palette, const SheetPictures &pictures);

    void draw(QPainter &painter) const;

private:
    void drawPage(QPainter &painter) const;
    void drawTexts(QPainter &painter) const;
    void drawLargePicture(QPainter &painter) const;
    void drawGrid(QPainter &painter) const;
    void drawCell(QPainter &painter, const CellPlace &place, const QImage &picture) const;
    void drawTimecode(QPainter &painter, const CellPlace &place, const QString &timecode) const;
    QString timecodeOf(int position) const;
    TextStyle style(double size, const QColor &colour, QChar alignment) const;

    const SheetContent &m_content;
    const SheetGeometry &m_geometry;
    const SheetPalette &m_palette;
    const SheetPictures &m_pictures;
};

} // namespace vignar
