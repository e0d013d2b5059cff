#include "classShared/format.h"

#include "classShared/truncation.h"

#include <QDebug>
#include <QJsonDocument>
#include <QRegularExpression>

#include <cstdio>
#include <limits>
#include <optional>

#include <locale.h>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

/// Numbers of the calling thread are written with a decimal point while this lives.
class PointLocale
{
public:
    PointLocale() : m_previous(uselocale(pointLocale())) {}
    ~PointLocale() { uselocale(m_previous); }
    Q_DISABLE_COPY_MOVE(PointLocale)

private:
    static locale_t pointLocale()
    {
        static const locale_t made = newlocale(LC_NUMERIC_MASK, "C", nullptr);
        return made;
    }

    locale_t m_previous;
};

/// One placeholder, its parts already limited to what printf takes safely.
struct Placeholder {
    QString flags;
    QString width;
    QString precision;
    QChar conversion;
};

bool isWholeNumber(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
        return true;
    default:
        return false;
    }
}

std::optional<qint64> toWholeNumber(const QVariant &value)
{
    bool isNumber = false;
    if (isWholeNumber(value))
        return value.toLongLong();
    if (value.typeId() == QMetaType::QString) {
        const qint64 whole = value.toString().toLongLong(&isNumber);
        if (isNumber)
            return whole;
    }
    const double number = value.toDouble(&isNumber);
    return isNumber ? std::optional(truncatedTo<qint64>(number)) : std::nullopt;
}

std::optional<double> toFloating(const QVariant &value)
{
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

/// printf itself, because its rounding of the last decimal is the one wanted.
template <class T>
QString printed(const Placeholder &placeholder, const char *length, T number)
{
    QByteArray format = "%" + placeholder.flags.toLatin1() + placeholder.width.toLatin1();
    if (!placeholder.precision.isNull())
        format += "." + placeholder.precision.toLatin1();
    format += length;
    format += placeholder.conversion.toLatin1();

    const PointLocale point;
    char text[1536]; // The longest: 309 digits and 99 decimals, or a width of 999.
    std::snprintf(text, sizeof text, format.constData(), number);
    return QString::fromLatin1(text);
}

QString justified(const Placeholder &placeholder, QString text)
{
    if (!placeholder.precision.isNull())
        text.truncate(placeholder.precision.toInt());
    const int width = placeholder.width.toInt();
    return placeholder.flags.contains(u'-') ? text.leftJustified(width)
                                            : text.rightJustified(width);
}

QString filledOne(const Placeholder &placeholder, const QVariant &value)
{
    if (u"diuxX"_s.contains(placeholder.conversion)) {
        if (const auto number = toWholeNumber(value))
            return printed(placeholder, "ll", *number);
    } else if (u"eEfFgG"_s.contains(placeholder.conversion)) {
        if (const auto number = toFloating(value))
            return printed(placeholder, "", *number);
    } else {
        return justified(placeholder, describe(value));
    }
    return describe(value);
}

/// The shortest text that reads back as the same number.
QString describeFloating(const QVariant &value)
{
    if (value.typeId() == QMetaType::Float)
        return QString::number(value.toFloat(), 'g', std::numeric_limits<float>::digits10 + 1);
    return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
}

QString describeOther(const QVariant &value)
{
    const QJsonDocument json = QJsonDocument::fromVariant(value);
    if (!json.isNull())
        return QString::fromUtf8(json.toJson(QJsonDocument::Compact));
    if (value.canConvert<QString>())
        return value.toString();
    QString text;
    QDebug(&text).nospace() << value;
    return text;
}

} // namespace

QString describe(const QVariant &value)
{
    if (isWholeNumber(value))
        return value.typeId() == QMetaType::Bool ? QString::number(value.toInt())
                                                 : value.toString();
    switch (value.typeId()) {
    case QMetaType::QString:
        return value.toString().isNull() ? u"(null)"_s : value.toString();
    case QMetaType::Double:
    case QMetaType::Float:
        return describeFloating(value);
    default:
        return value.isNull() ? u"(null)"_s : describeOther(value);
    }
}

QString filledList(QStringView format, std::initializer_list<FormatValue> values)
{
    static const QRegularExpression placeholders(
        u"%([-+ #0]*)(\\d{1,3})?(?:\\.(\\d{0,2}))?(?:hh?|ll?|q)?([@sdiuxXeEfFgG%])"_s);

    const QString text = format.toString();
    QString result;
    qsizetype copiedTo = 0;
    auto value = values.begin();
    for (auto found = placeholders.globalMatch(text); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        const Placeholder placeholder{match.captured(1), match.captured(2), match.captured(3),
                                      match.capturedView(4).front()};
        const bool isPercent = placeholder.conversion == u'%';
        if (!isPercent && value == values.end())
            continue;
        result += QStringView(text).mid(copiedTo, match.capturedStart() - copiedTo);
        result += isPercent ? u"%"_s : filledOne(placeholder, (value++)->value());
        copiedTo = match.capturedEnd();
    }
    return result += QStringView(text).mid(copiedTo);
}

} // namespace vignar
