#include "sheet/pictureTimes.h"

#include <QRegularExpression>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr QLatin1String teller{",showinfo@"};
constexpr QLatin1String substituteName{"substitute"};
/// Passes hold their instants with two decimals at least.
constexpr double roundingSeconds = 0.005;

double secondsAfter(const QStringList &pass, qsizetype option)
{
    return option < 0 ? 0 : pass.value(option + 1).toDouble();
}

} // namespace

QString timeTeller(int number)
{
    return teller + QString::number(number);
}

bool tellsTimes(const QString &filter)
{
    return filter.contains(teller);
}

QString tellingAsSubstitute(const QString &filter)
{
    return QString(filter).replace(teller, teller + substituteName);
}

std::optional<double> toldTime(const QString &report, const QStringList &pass, int number,
                               bool isSubstitute)
{
    // ffmpeg counts from where the source is entered.
    const qsizetype input = pass.indexOf(u"-i"_s);
    const qsizetype first = pass.indexOf(u"-ss"_s);
    const double entry = secondsAfter(pass, first < input ? first : -1);
    const double runUp = secondsAfter(pass, pass.indexOf(u"-ss"_s, std::max<qsizetype>(input, 0)));
    const QRegularExpression line(u"\\[showinfo@%1%2 @ [^\\]]*\\] n: *\\d+ .*? pts_time:(\\S+)"_s
                                      .arg(isSubstitute ? substituteName : QLatin1String())
                                      .arg(number));
    for (auto found = line.globalMatch(report); found.hasNext();) {
        bool isNumber = false;
        const double seconds = found.next().captured(1).toDouble(&isNumber);
        if (isNumber && seconds >= runUp - roundingSeconds)
            return entry + seconds;
    }
    return std::nullopt;
}

} // namespace vignar
