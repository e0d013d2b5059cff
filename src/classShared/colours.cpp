#include "classShared/colours.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace vignar
{

std::optional<QColor> colorHexaRgb(const QString &text)
{
    static const QRegularExpression sixDigits(
        QRegularExpression::anchoredPattern(u"#?([0-9A-Fa-f]{6})"_s));
    const QRegularExpressionMatch match = sixDigits.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    return QColor::fromRgb(match.captured(1).toUInt(nullptr, 16));
}

QString colorToHexaRgb(const QColor &colour)
{
    return colour.name(QColor::HexRgb).mid(1);
}

} // namespace vignar
