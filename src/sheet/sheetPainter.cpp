#include "sheet/sheetPainter.h"

#include "sheet/extractionPasses.h"
#include "sheet/sheetPictures.h"
#include "sheet/textStyle.h"

#include <QFontMetricsF>
#include <QPainterPath>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

/// Stands between the name of an info line and its value.
constexpr QStringView labelSeparator = u" : ";

} // namespace

SheetPainter::SheetPainter(const SheetContent &content, const SheetGeometry &geometry,
                           const SheetPalette &palette, const SheetPictures &pictures)
    : m_content(content), m_geometry(geometry), m_palette(palette), m_pictures(pictures)
{
}

void SheetPainter::draw(QPainter &painter) const
{
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    drawPage(painter);
    drawTexts(painter);
    drawLargePicture(painter);
    drawGrid(painter);
}

void SheetPainter::drawPage(QPainter &painter) const
{
    // A document's page may be a fraction of a pixel larger than the sheet.
    painter.fillRect(QRect({}, m_geometry.page).adjusted(-8, -8, 8, 8), m_palette.page);
}

void SheetPainter::drawTexts(QPainter &painter) const
{
    drawText(painter, m_geometry.title, m_content.title,
             style(m_geometry.titleSize, m_palette.titleText, u'l'));

    const TextStyle label = style(m_geometry.infoSize, m_palette.infoText, u'r');
    const TextStyle value = style(m_geometry.infoSize, m_palette.infoText, u'l');
    const QString separator = labelSeparator.toString();
    const double separatorWidth =
        QFontMetricsF(textFont(m_geometry.infoSize)).horizontalAdvance(separator);
    for (size_t line = 0; line < m_content.infoLines.size(); ++line) {
        const InfoLinePlace &place = m_geometry.infoLines[line];
        drawText(painter, place.label, m_content.infoLines[line].label, label);
        // Apart from the value, which may run from right to left.
        drawText(painter, place.value, separator, value);
        drawText(painter, place.value.adjusted(separatorWidth, 0, 0, 0),
                 m_content.infoLines[line].value, value);
    }

    drawText(painter, m_geometry.credit, m_content.credit,
             style(m_geometry.creditSize, m_palette.infoText, u'c'));
}

void SheetPainter::drawLargePicture(QPainter &painter) const
{
    const QRect box = m_geometry.mix;
    if (box.isEmpty())
        return;
    const QImage picture = m_pictures.large(box.size());
    if (!picture.isNull())
        painter.drawImage(box, picture);
}

void SheetPainter::drawGrid(QPainter &painter) const
{
    size_t cell = 0;
    for (int position = 0; position < m_pictures.count(); ++position) {
        const CellPlace &place = m_geometry.cells[cell];
        const QImage picture = m_pictures.cell(position, place.picture.size());
        if (picture.isNull())
            continue;
        drawCell(painter, place, picture);
        drawTimecode(painter, place, timecodeOf(position));
        ++cell;
    }
}

void SheetPainter::drawCell(QPainter &painter, const CellPlace &place, const QImage &picture) const
{
    painter.fillRect(place.picture, m_palette.page);
    painter.drawImage(place.picture, picture);
    // Last, because viewers of documents enlarge pictures to whole pixels of the screen
    // and would cover part of a thin frame.
    QPainterPath frame;
    frame.addRect(place.frame);
    frame.addRect(place.picture);
    painter.fillPath(frame, m_palette.border);
}

void SheetPainter::drawTimecode(QPainter &painter, const CellPlace &place,
                                const QString &timecode) const
{
    TextStyle white = style(m_geometry.timecodeSize, Qt::white, u'r');
    white.backing = TextBacking::plate;
    drawText(painter, place.timecode, timecode, white);
}

QString SheetPainter::timecodeOf(int position) const
{
    // By the number in the file name: where a picture is missing, the ones after it
    // keep their own.
    const int number = thumbnailIndex(m_pictures.path(position));
    return m_content.timecodes.value(QString::number(number < 0 ? position : number)).toString();
}

TextStyle SheetPainter::style(double size, const QColor &colour, QChar alignment) const
{
    return textStyle(size, colour, alignment, double(m_geometry.page.width()) / basePageWidth);
}

} // namespace vignar
