#include "shell/preferences/presetChooser.h"

#include "settings/stringTables.h"
#include "shell/choiceRow.h"

#include <QPainter>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr QSize pictureSize{42, 30};
constexpr double corner = 3;

/// A page with its line of text and two framed pictures.
void drawPreset(QPainter &painter, const QRectF &place, const ColourPreset &preset,
                const QColor &edge)
{
    const QColor page(u'#' + preset.page);
    const QColor border(u'#' + preset.border);
    painter.setPen(QPen(edge, 1));
    painter.setBrush(page);
    painter.drawRoundedRect(place.adjusted(0.5, 0.5, -0.5, -0.5), corner, corner);
    painter.fillRect(QRectF(place.left() + 5, place.top() + 5, place.width() * 0.45, 3), border);
    painter.setPen(QPen(border, 1.5));
    painter.setBrush(Qt::NoBrush);
    const double width = (place.width() - 13) / 2;
    for (const double x : {place.left() + 5, place.left() + 8 + width})
        painter.drawRect(QRectF(x, place.top() + 12, width, place.height() - 17));
}

/// Dots of many colours: whatever the user mixes.
void drawOwn(QPainter &painter, const QRectF &place, const QColor &edge)
{
    painter.setPen(QPen(edge, 1, Qt::DashLine));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(place.adjusted(0.5, 0.5, -0.5, -0.5), corner, corner);
    painter.setPen(Qt::NoPen);
    constexpr QColor dots[] = {QColor(0xd6, 0x45, 0x50), QColor(0xe0, 0xa0, 0x30),
                               QColor(0x3b, 0x8f, 0x6b), QColor(0x3a, 0x6f, 0xc4)};
    double x = place.left() + 9;
    for (const QColor &dot : dots) {
        painter.setBrush(dot);
        painter.drawEllipse(QPointF(x, place.center().y()), 3.4, 3.4);
        x += 8;
    }
}

} // namespace

ChoiceRow *makePresetChooser()
{
    auto *chooser = new ChoiceRow(localised(u"V_prefColor"_s));
    const auto words = [](QLatin1String name) {
        return localised(QLatin1String("V_prefColor_") + name);
    };
    int segment = 0;
    for (const ColourPreset &preset : colourPresets()) {
        chooser->add(segment++, words(preset.name), words(preset.name), pictureSize,
                     [preset](QPainter &painter, const QRectF &place, const QColor &edge) {
                         drawPreset(painter, place, preset, edge);
                     });
    }
    chooser->add(ownColours(), localised(u"V_prefColor_own"_s), localised(u"V_prefColor_ownTip"_s),
                 pictureSize, drawOwn);
    return chooser;
}

} // namespace vignar
