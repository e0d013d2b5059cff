#include "analysis/reportText.h"

#include "classShared/numbers.h"

#include <QRegularExpression>

#include <array>
#include <charconv>
#include <limits>

using namespace Qt::StringLiterals;

namespace vignar
{

QStringList reportLines(const QString &report)
{
    static const QRegularExpression colour(u"\x1b\\[[0-9;]*m"_s);
    QString text = report;
    if (text.contains(QChar(0x1b)))
        text.remove(colour);
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return text.split(QLatin1Char('\n'));
}

QStringView textBefore(QStringView text, QStringView mark)
{
    const qsizetype at = text.indexOf(mark);
    return at < 0 ? text : text.first(at);
}

QStringView textAfter(QStringView text, QStringView mark)
{
    const qsizetype at = text.indexOf(mark);
    return at < 0 ? QStringView() : text.sliced(at + mark.size());
}

int leadingInt(QStringView text)
{
    text = text.trimmed();
    const bool isNegative = text.startsWith(QLatin1Char('-'));
    if (isNegative || text.startsWith(QLatin1Char('+')))
        text = text.sliced(1);
    constexpr qint64 limit = std::numeric_limits<int>::max();
    qint64 value = 0;
    for (const QChar character : text) {
        if (character < QLatin1Char('0') || character > QLatin1Char('9'))
            break;
        value = std::min(limit, value * 10 + character.digitValue());
    }
    return int(isNegative ? -value : value);
}

bool isPlainInt(QStringView text)
{
    return text == QString::number(leadingInt(text));
}

double reportNumber(QStringView text)
{
    const float value = str2Float(text.toString());
    std::array<char, 32> digits{};
    const auto written = std::to_chars(digits.begin(), digits.end(), value);
    double widened = value;
    std::from_chars(digits.begin(), written.ptr, widened);
    return widened;
}

} // namespace vignar
