#pragma once

#include <QString>
#include <QStringView>
#include <QVariant>

#include <initializer_list>
#include <type_traits>

namespace vignar
{

/// One value for filled(): any number, text or variant.
class FormatValue
{
public:
    template <class T>
    requires std::is_integral_v<T> FormatValue(T value)
        : m_value(QVariant::fromValue(static_cast<qint64>(value)))
    {
    }
    FormatValue(double value) : m_value(value) {}
    FormatValue(const QString &value) : m_value(value) {}
    FormatValue(QStringView value) : m_value(value.toString()) {}
    FormatValue(const QVariant &value) : m_value(value) {}

    const QVariant &value() const { return m_value; }

private:
    QVariant m_value;
};

/// Fills a format written in the system's own notation with values, in order.
///
/// Understood are "%@" (any value as text), "%d %i %u %x" with any of the lengths
/// h, l, ll and q, "%f %e %g" with flags, width and precision, "%s" and "%%".
/// A number is converted when its kind does not fit the placeholder, a text that is no
/// number is shown as it is; a placeholder without a value stays as written, surplus
/// values are ignored. Values are never read as formats, so a "%" in a file name is
/// harmless. Numbers are written with a decimal point whatever the locale.
QString filledList(QStringView format, std::initializer_list<FormatValue> values);

template <class... Values>
QString filled(QStringView format, const Values &...values)
{
    return filledList(format, {FormatValue(values)...});
}

/// A value as "%@" shows it: texts as they are, whole numbers without a point,
/// lists and dictionaries as compact JSON, an invalid or null value as "(null)".
QString describe(const QVariant &value);

} // namespace vignar
