#include "classShared/durations.h"

#include "classShared/lineLog.h"
#include "classShared/numbers.h"
#include "classShared/truncation.h"

#include <QRegularExpression>
#include <QStringList>

#include <cmath>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

constexpr int secondsPerHour = 3600;
constexpr int secondsPerMinute = 60;

/// The whole number that the text begins with, blanks skipped; 0 when there is none.
int leadingInteger(const QString &text)
{
    static const QRegularExpression leading(u"^\\s*([-+]?[0-9]+)"_s);
    return truncatedTo<int>(leading.match(text).captured(1).toDouble());
}

QString twoDigits(int number)
{
    return number <= 9 ? filled(u"0%ld", number) : filled(u"%ld", number);
}

/// Hours, minutes and seconds from "days:hours:minutes:seconds".
void joinDays(QStringList &fields)
{
    const float hours = str2Float(fields.at(0)) * 24 + str2Float(fields.at(1));
    fields[1] = filled(u"%ld", truncatedTo<int>(hours));
    fields.removeFirst();
    logDebug(u"tcMArray *3         : %@", fields);
}

/// "12.15/25", picture 15 of 25 in second 12, as "12.600".
QString secondsOfFrames(const QString &field)
{
    const QString frames = field.section(u'.', 1).section(u'/', 0, 0);
    const float rate = str2Float(field.section(u'/', 1));
    const float fraction = rate != 0 ? str2Float(frames) / rate : 0;
    return filled(u"%.3f", str2Float(field.section(u'.', 0, 0)) + fraction);
}

float secondsOfFields(QStringList fields)
{
    QString &seconds = fields[2];
    if (seconds.contains(u'.') && seconds.contains(u'/')) {
        seconds = secondsOfFrames(seconds);
        logDebug(u"tcMArray ms         : %@", fields);
    }
    return secondsPerHour * str2Float(fields.at(0)) + secondsPerMinute * str2Float(fields.at(1)) +
           str2Float(seconds);
}

} // namespace

float timecodeStr2Float(const QString &text)
{
    if (text.isNull())
        return 0;
    QString whole = text;
    QStringList fields = text.section(u' ', 0, 0, QString::SectionSkipEmpty).split(u':');
    logDebug(u"tcMArray            : %@", fields);
    if (fields.size() == 4)
        joinDays(fields);
    fields.last().replace(u',', u'.');
    logDebug(u"delimiterMsStr      : '%@'", fields.last().contains(u'.') ? u"."_s : u"nil"_s);

    whole.replace(u',', u'.');
    float seconds = 0;
    if (fields.size() == 1)
        seconds = str2Float(whole);
    else if (fields.size() == 3)
        seconds = secondsOfFields(fields);
    logDebug(u"returnedFloat       :-) %f", seconds);

    constexpr int noticeSeconds = 60;
    if (isDebug() && std::abs(seconds) < 0.001F && str2Float(whole) != 0)
        notice(u"utils > timecodeStr2Float ? :-/"_s,
               filled(u"…à revoir :-( returnedFloat = %f", seconds), noticeSeconds);
    return seconds;
}

int secondesStr2Int(const QString &text)
{
    const qsizetype hoursEnd = text.indexOf(u'h');
    const qsizetype minutesEnd = text.indexOf(u'\'');
    if (hoursEnd < 0 || minutesEnd < 0 || !text.contains(u'"'))
        return leadingInteger(text);
    const double hours = leadingInteger(text);
    const double minutes = leadingInteger(text.mid(hoursEnd + 1));
    const double seconds = leadingInteger(text.mid(minutesEnd + 1));
    logDebug(u"secondesStr2Int     :-) %@", text);
    return truncatedTo<int>(secondsPerHour * hours + secondsPerMinute * minutes + seconds);
}

QString duree2MinutesStr(float minutes)
{
    if (!(minutes > 0))
        return u""_s;
    QString text = filled(u"-%@%.1f'", minutes < 10 ? u"0"_s : u""_s, minutes);
    logLine(u"duree2MinutesStr    : %@", text);
    return text;
}

QString duree2HmsStr(int seconds)
{
    const int hours = seconds / secondsPerHour;
    const int minutes = seconds / secondsPerMinute - 60 * hours;
    const int rest = seconds - secondsPerHour * hours - secondsPerMinute * minutes;
    QString text = filled(u"%ldh%@%ld'%@%ld\"", hours, minutes < 10 ? u"0"_s : u""_s, minutes,
                          rest < 10 ? u"0"_s : u""_s, rest);
    logLine(u"duree2HmsStr        : %@", text);
    return text;
}

QString duree2TimecodeStr(float seconds, int decimals, bool padHours)
{
    const int whole = truncatedTo<int>(seconds);
    const int hours = whole / secondsPerHour;
    const QString minutesText = twoDigits(whole % secondsPerHour / secondsPerMinute);
    const QString secondsText = twoDigits(whole % secondsPerHour % secondsPerMinute);
    QString text;
    if (decimals <= 0) {
        text = filled(u"%ld:%@:%@", hours, minutesText, secondsText);
    } else {
        const int digits = qMin(decimals, 3);
        const auto scale = static_cast<float>(std::pow(10, digits));
        const int fraction =
            truncatedTo<int>(std::abs(seconds - static_cast<float>(whole)) * scale);
        text =
            filled(u"%@%ld:%@:%@.%@", padHours && hours < 10 ? u"0"_s : u""_s, hours, minutesText,
                   secondsText, QString::number(fraction).rightJustified(digits, u'0'));
    }
    logLine(u"duree2TimecodeStr   : %@", text);
    return text;
}

} // namespace vignar
