#include "sheet/textStyle.h"

#include "classShared/lineLog.h"
#include "sheet/sheetPalette.h"

#include <QFontMetricsF>
#include <QImage>
#include <QPaintEngine>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

constexpr double defaultSize = 11;
constexpr double lightText = 0.81;
/// Pixels; the toolkit knows no smaller fraction.
constexpr double leastSpacing = 1.0 / 64;
constexpr double shadowOpacity = 0.6;
constexpr double shadowOffset = 1.5;
constexpr double shadowBlur = 5;
/// The plate's margins around the capitals and its corners, in font sizes.
constexpr double plateSide = 0.3;
constexpr double plateAbove = 0.25;
constexpr double plateCorner = 0.2;
constexpr double plateOpacity = 0.55;

/// Mean over 2 · radius + 1 neighbours along one row or column of a mask.
void blurLine(uchar *line, int count, qsizetype step, int radius)
{
    std::vector<uchar> source(count);
    for (int i = 0; i < count; ++i)
        source[i] = line[i * step];
    const auto at = [&](int i) { return i >= 0 && i < count ? source[i] : 0; };
    int sum = 0;
    for (int i = -radius; i < radius; ++i)
        sum += at(i);
    for (int i = 0; i < count; ++i) {
        sum += at(i + radius);
        line[i * step] = static_cast<uchar>(sum / (2 * radius + 1));
        sum -= at(i - radius);
    }
}

/// Three box means stand in for the Gaussian whose deviation is half the blur radius.
void blur(QImage &mask, double blurRadius)
{
    const int radius = qRound((std::sqrt(blurRadius * blurRadius + 1) - 1) / 2);
    uchar *pixels = mask.bits();
    const qsizetype stride = mask.bytesPerLine();
    for (int pass = 0; pass < 3; ++pass) {
        for (int y = 0; y < mask.height(); ++y)
            blurLine(pixels + y * stride, mask.width(), 1, radius);
        for (int x = 0; x < mask.width(); ++x)
            blurLine(pixels + x, mask.height(), stride, radius);
    }
}

void drawSoftened(QPainter &painter, const QPainterPath &shape, double blurRadius, double opacity)
{
    const int margin = qCeil(2 * blurRadius);
    const QRect area =
        shape.boundingRect().toAlignedRect().adjusted(-margin, -margin, margin, margin);
    QImage mask(area.size(), QImage::Format_Alpha8);
    if (mask.isNull())
        return;
    mask.fill(0);
    QPainter maskPainter(&mask);
    maskPainter.setRenderHint(QPainter::Antialiasing);
    maskPainter.translate(-area.topLeft());
    maskPainter.fillPath(shape, Qt::black);
    maskPainter.end();
    blur(mask, blurRadius);

    painter.setOpacity(opacity);
    painter.drawImage(area.topLeft(), mask);
    painter.setOpacity(1);
}

/// A vector page cannot blur: the shape itself stands for its shadow there. Shapes, and
/// not a second text, keep the line from being found and copied twice.
void drawShadow(QPainter &painter, const QPainterPath &shape, double scale)
{
    const QPainterPath shadow = shape.translated(0, shadowOffset * scale);
    if (painter.paintEngine()->type() == QPaintEngine::Pdf)
        painter.fillPath(shadow, QColor::fromRgbF(0, 0, 0, shadowOpacity));
    else
        drawSoftened(painter, shadow, shadowBlur * scale, shadowOpacity);
}

void drawPlate(QPainter &painter, const QRectF &capitals, double size)
{
    const double side = plateSide * size;
    const double above = plateAbove * size;
    QPainterPath plate;
    plate.addRoundedRect(capitals.adjusted(-side, -above, side, above), plateCorner * size,
                         plateCorner * size);
    painter.fillPath(plate, QColor::fromRgbF(0, 0, 0, plateOpacity));
}

double lineStart(const QRectF &place, double width, QChar alignment)
{
    if (alignment == u'r')
        return place.right() - width;
    if (alignment == u'c')
        return place.center().x() - width / 2;
    return place.left();
}

} // namespace

TextStyle textStyle(double size, const std::optional<QColor> &colour, QChar alignment, double scale)
{
    TextStyle style;
    style.size = size < 0 ? defaultSize : size;
    style.colour = colour && colour->isValid() ? *colour : QColor(Qt::white);
    style.alignment = alignment;
    style.scale = scale;
    const double average = luminance(style.colour);
    if (average > lightText)
        style.backing = TextBacking::shadow;
    else
        logVerbose(u"rgba average txt    : %.2f (size=%.0f, align:%@) -> isShadow ? %d", average,
                   style.size, QString(alignment), 0);
    return style;
}

QFont textFont(double size)
{
    QFont font(u"sans-serif"_s);
    font.setStyleHint(QFont::SansSerif,
                      QFont::StyleStrategy(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setPixelSize(std::max(1, qRound(size)));
    // A spacing too small to see keeps "fi" two letters, which a search in a document finds.
    font.setLetterSpacing(QFont::AbsoluteSpacing, leastSpacing);
    return font;
}

QString singleLine(const QString &text)
{
    QString line = text;
    for (QChar &character : line) {
        const QChar::Category category = character.category();
        if (category == QChar::Other_Control || category == QChar::Separator_Line ||
            category == QChar::Separator_Paragraph)
            character = u' ';
    }
    return line;
}

void drawText(QPainter &painter, const QRectF &place, const QString &text, const TextStyle &style)
{
    const QFont font = textFont(style.size);
    const QFontMetricsF metrics(font);
    const QString line = metrics.elidedText(singleLine(text), Qt::ElideRight, place.width());
    if (line.isEmpty())
        return;
    const double width = metrics.horizontalAdvance(line);
    const double capitals = metrics.capHeight();
    const QPointF baseline(qRound(lineStart(place, width, style.alignment)),
                           qRound(place.center().y() + capitals / 2));

    if (style.backing == TextBacking::plate)
        drawPlate(painter, {baseline - QPointF(0, capitals), QSizeF(width, capitals)}, style.size);
    if (style.backing != TextBacking::none) {
        QPainterPath shape;
        shape.addText(baseline, font, line);
        drawShadow(painter, shape, style.scale);
    }
    painter.setFont(font);
    painter.setPen(style.colour);
    painter.drawText(baseline, line);
}

} // namespace vignar
