#include "shell/layoutPicture.h"

#include "classShared/sourceDico.h"
#include "sheet/thumbnailPlan.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace vignar
{

namespace
{

/// Whole pixels of the device keep thin gaps sharp at any scale.
class PixelSnap
{
public:
    explicit PixelSnap(const QPainter &painter) : m_ratio(painter.deviceTransform().m11()) {}

    double operator()(double value) const { return std::round(value * m_ratio) / m_ratio; }
    QRectF operator()(const QRectF &place) const
    {
        return {QPointF((*this)(place.left()), (*this)(place.top())),
                QPointF((*this)(place.right()), (*this)(place.bottom()))};
    }

private:
    double m_ratio;
};

QColor faint(const QColor &colour, double alpha)
{
    QColor result = colour;
    result.setAlphaF(static_cast<float>(alpha));
    return result;
}

void drawPage(QPainter &painter, const QRectF &page, const QColor &colour)
{
    painter.setPen(QPen(faint(colour, 0.55), 1));
    painter.setBrush(faint(colour, 0.06));
    painter.drawRoundedRect(page.adjusted(0.5, 0.5, -0.5, -0.5), 2, 2);
    painter.setPen(Qt::NoPen);
}

/// As many whole rows of cells, each 16 to 9, as fit.
void drawGrid(QPainter &painter, const QRectF &area, int columns, double gap, const QColor &colour)
{
    const PixelSnap snap(painter);
    const double width = (area.width() - (columns - 1) * gap) / columns;
    const double height = width * 9 / 16;
    const int rows = static_cast<int>((area.height() + gap) / (height + gap));
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const QRectF cell(area.left() + column * (width + gap),
                              area.top() + row * (height + gap), width, height);
            painter.fillRect(snap(cell), colour);
        }
    }
}

} // namespace

void drawLayout(QPainter &painter, const QRectF &place, int layout, const QColor &colour)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    drawPage(painter, place, colour);
    QRectF area = place.adjusted(4, 9, -4, -4);
    const PixelSnap snap(painter);
    painter.fillRect(snap(QRectF(area.left(), place.top() + 4, area.width() * 0.5, 2)),
                     faint(colour, 0.8));
    const int columns = layoutGrid(layout).columns;
    const double gap = columns < 6 ? 2 : 1;
    if (layout == mixLayout) {
        const QRectF large(area.topLeft(), QSizeF(area.width(), area.width() * 9 / 16));
        painter.fillRect(snap(large), colour);
        area.setTop(large.bottom() + gap);
    }
    drawGrid(painter, area, columns, gap, faint(colour, layout == mixLayout ? 0.65 : 0.85));
    painter.restore();
}

void drawFormat(QPainter &painter, const QRectF &place, int format, const QColor &colour)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    drawPage(painter, place, colour);
    const QRectF area = place.adjusted(5, 6, -5, -6);
    if (format == 0) {
        for (int line = 0; line < 5; ++line) {
            const double width = area.width() * (line % 2 == 0 ? 1.0 : 0.7);
            painter.fillRect(PixelSnap(painter)(QRectF(
                                 area.left(), area.top() + line * area.height() / 5, width, 3)),
                             faint(colour, 0.7));
        }
    } else {
        painter.setBrush(faint(colour, 0.85));
        painter.drawEllipse(QPointF(area.left() + 5, area.top() + 6), 3, 3);
        QPainterPath hills;
        hills.moveTo(area.left(), area.bottom());
        hills.lineTo(area.left() + area.width() * 0.38, area.top() + area.height() * 0.5);
        hills.lineTo(area.left() + area.width() * 0.58, area.top() + area.height() * 0.72);
        hills.lineTo(area.left() + area.width() * 0.74, area.top() + area.height() * 0.55);
        hills.lineTo(area.right(), area.bottom());
        painter.drawPath(hills);
    }
    painter.restore();
}

} // namespace vignar
