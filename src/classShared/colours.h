#pragma once

#include <QColor>
#include <QString>

#include <optional>

namespace vignar
{

/// The opaque colour of six hexadecimal digits red-green-blue (a leading "#" is
/// accepted); nothing for any other text.
std::optional<QColor> colorHexaRgb(const QString &text);

/// Six lower-case hexadecimal digits of the colour; its alpha is dropped.
QString colorToHexaRgb(const QColor &colour);

} // namespace vignar
