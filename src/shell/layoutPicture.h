#pragma once

#include <QRectF>

class QColor;
class QPainter;

namespace vignar
{

/// A small picture of a sheet in a layout: its title line and its grid, in one colour,
/// on whole pixels of the device.
void drawLayout(QPainter &painter, const QRectF &place, int layout, const QColor &colour);

/// A small picture of an output format: 0 a PDF page, else a JPEG picture.
void drawFormat(QPainter &painter, const QRectF &place, int format, const QColor &colour);

} // namespace vignar
