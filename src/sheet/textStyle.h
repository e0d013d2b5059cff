#pragma once

#include <QColor>
#include <QFont>
#include <QRectF>
#include <QString>

#include <optional>

class QPainter;

namespace vignar
{

/// What lies under a text to set it off from what it stands on.
enum class TextBacking {
    none,
    /// A soft shadow just below.
    shadow,
    /// The shadow on a dark translucent plate, for text on pictures.
    plate
};

/// How one line of text is drawn.
struct TextStyle {
    /// Pixels.
    double size = 0;
    QColor colour;
    /// l left, r right, c centre, j justified (a single line: as left).
    QChar alignment = u'l';
    TextBacking backing = TextBacking::none;
    /// Scale of the page, which the backing follows.
    double scale = 1;
};

/// The style of a text: no colour means white, a negative size 11, and colours of a
/// luminance above 0.81 get the shadow.
TextStyle textStyle(double size, const std::optional<QColor> &colour, QChar alignment,
                    double scale = 1);

/// The system's sans-serif font, free of what desktops adjust, so that a sheet looks
/// the same wherever it is made.
QFont textFont(double size);

/// The text with blanks for its line breaks and other control characters.
QString singleLine(const QString &text);

/// Draws one line, centred vertically on its capitals and cut with an ellipsis at the
/// rectangle's width. On a PDF the line stays text, its backing is vectors.
void drawText(QPainter &painter, const QRectF &place, const QString &text, const TextStyle &style);

} // namespace vignar
