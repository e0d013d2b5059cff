#include "app/progressValue.h"

#include "classShared/lineLog.h"

#include <QRegularExpression>

#include <algorithm>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

const QString timeToken = u"time="_s;

float leadingNumber(const QString &text)
{
    static const QRegularExpression number(uR"(^[ \t]*([+-]?(?:\d+\.?\d*|\.\d+)))"_s);
    return number.match(text).captured(1).toFloat();
}

float clockTime(const QString &text)
{
    const QStringList parts = text.section(u' ', 0, 0).trimmed().split(u':');
    if (parts.size() != 3)
        return 0;
    return parts[0].toFloat() * 3600 + parts[1].toFloat() * 60 + leadingNumber(parts[2]);
}

} // namespace

QString progressToken(int parseMode)
{
    switch (parseMode) {
    case parseTime:
        return timeToken;
    case parsePercentage:
        return u"pourcentage    : "_s;
    case parseBatch:
        return u"(batch "_s;
    case parseProcessing:
        return u"Processing ("_s;
    case parseSteps:
        return u"steps          : "_s;
    case parseBar:
        return u"| ("_s;
    default:
        return {};
    }
}

float progressValue(const QString &text, const QString &token)
{
    const qsizetype at = token.isEmpty() ? -1 : text.indexOf(token);
    if (at < 0)
        return 0;
    const QString rest = text.mid(at + token.size());
    return token == timeToken ? clockTime(rest) : leadingNumber(rest);
}

std::optional<int> percentToShow(double value, double maximum, double previousValue)
{
    if (value <= -1.0 || maximum <= 0)
        return std::nullopt;
    const double percent = 100.0 * value / maximum;
    const double previous = 100.0 * previousValue / maximum;
    if (static_cast<qint64>(percent) <= static_cast<qint64>(previous)) {
        logDebug(u"…not to update");
        return std::nullopt;
    }
    if (percent > 99.0) {
        logDebug(u"…not ended yet");
        return std::nullopt;
    }
    return static_cast<int>(percent);
}

double speedOf(double duration, qint64 milliseconds)
{
    return duration / double(std::max<qint64>(1, milliseconds / 1000));
}

QString maximumVolume(const QString &text)
{
    if (!text.contains("[Parsed_volumedetect"_L1))
        return {};
    static const QRegularExpression volume(uR"(\] max_volume: ([-+]?[\d.]+) dB)"_s);
    const QRegularExpressionMatch match = volume.match(text);
    return match.hasMatch() ? match.captured(1) : QString();
}

QString averageLoudness(const QString &text)
{
    static const QRegularExpression loudness(uR"(    I:       ([-+]?[\d.]+) LUFS)"_s);
    const QRegularExpressionMatch match = loudness.match(text);
    return match.hasMatch() ? match.captured(1) : QString();
}

} // namespace vignar
