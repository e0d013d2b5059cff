#include "classShared/numbers.h"

#include "classShared/lineLog.h"
#include "classShared/paths.h"
#include "classShared/truncation.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <optional>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

/// What the search for a common divisor asks of a candidate.
struct Wanted {
    int a;
    int b;
    bool evenOnly;

    bool divides(int candidate) const
    {
        return candidate > 0 && a % candidate == 0 && b % candidate == 0;
    }
    bool takes(int candidate) const
    {
        return (!evenOnly || candidate % 2 == 0) && divides(candidate);
    }
};

std::optional<int> firstTaken(const Wanted &wanted, int first, int last)
{
    for (qint64 candidate = first; candidate <= last; ++candidate) {
        if (wanted.takes(static_cast<int>(candidate)))
            return static_cast<int>(candidate);
    }
    return std::nullopt;
}

/// Ascending tries below and above the asked divisor, the nearest range first.
std::optional<int> takenNear(const Wanted &wanted, int d)
{
    struct Range {
        QStringView pass;
        int first;
        int last;
    };
    const double f = d;
    const int twice = truncatedTo<int>(f * 2.0);
    const Range ranges[] = {
        {u"nbsSousMultipleCommu: pass ± %ld", truncatedTo<int>(f / 1.5 + 0.5),
         truncatedTo<int>(f * 1.5) - 1},
        {u"nbsSousMultipleCommu: pass range < %ld", truncatedTo<int>(f * 0.5),
         truncatedTo<int>(f / 1.5) - 1},
        {u"nbsSousMultipleCommu: pass range > %ld", truncatedTo<int>(f * 1.5), twice - 1},
    };
    for (const Range &range : ranges) {
        logDebug(range.pass, d);
        if (const auto taken = firstTaken(wanted, range.first, range.last))
            return taken;
    }
    return std::nullopt;
}

/// The last resort: the largest even number up to 2d, or the largest of these primes.
std::optional<int> takenAmongPrimes(const Wanted &wanted, int d)
{
    logDebug(u"nbsSousMultipleCommu: pass range nb 1ers");
    if (wanted.evenOnly) {
        const int twice = truncatedTo<int>(2.0 * d) & ~1;
        for (int candidate = twice; candidate >= 2; candidate -= 2) {
            if (wanted.divides(candidate))
                return candidate;
        }
        return std::nullopt;
    }
    // Nine primes below 200 are left out on purpose.
    static constexpr int candidates[] = {
        1,  2,  3,  5,   7,   11,  13,  17,  19,  23,  29,  31,  37,  41,  43,  47,  53,  59,  67,
        71, 83, 89, 101, 107, 109, 113, 127, 131, 137, 139, 149, 157, 167, 179, 181, 191, 197, 199};
    const auto found = std::find_if(std::rbegin(candidates), std::rend(candidates),
                                    [&wanted](int candidate) { return wanted.divides(candidate); });
    return found == std::rend(candidates) ? std::nullopt : std::optional(*found);
}

/// "1" followed by n zeros, as far as single precision reaches.
float scaleOf(int n)
{
    return static_cast<float>(
        std::pow(10.0, qBound(0, n, std::numeric_limits<float>::max_exponent10)));
}

bool isNear(double value, double target)
{
    return std::abs(value - target) <= 0.02;
}

} // namespace

int nbsSousMultipleCommun(int a, int b, int d, bool evenOnly)
{
    if (d <= 0)
        return -1;
    logLine(u"nbsSousMultipleCommu: size=%ld vs %ld -> results=%ld & %ld "
            u"(with %ld as the asked Under Common Multiple)",
            a, b, a % d, b % d, d);
    const Wanted wanted{a, b, evenOnly};
    if (wanted.takes(d)) {
        logDebug(u"nbsSousMultipleCommu:-) initial %ld is a valid Under Common Multiple", d);
        return d;
    }
    std::optional<int> taken = takenNear(wanted, d);
    if (!taken)
        taken = takenAmongPrimes(wanted, d);
    if (taken)
        logDebug(u"SousMultiple mod    :-) %ld", *taken);
    logLine(u"nbsSousMultipleCommu: fin %ld", taken.value_or(-1));
    return taken.value_or(-1);
}

int nbMultipleArrondi(int v, int m)
{
    if (m <= 0)
        return v;
    const int rest = v % m;
    if (rest == 0)
        return v;
    int rounded = v - rest;
    logDebug(u"arrondiInferieur     : %ld", rounded);
    if (m / 2 > rest) {
        logDebug(u"nbMultipleArrondi    : arrondir en-dessous");
    } else {
        logDebug(u"nbMultipleArrondi    : arrondir au dessus");
        rounded += m;
    }
    logLine(u"nbMultipleArrondi    :-) %ld", rounded);
    return rounded;
}

QString float2FractionStr(float r)
{
    const double ratio = r;
    if (!std::isfinite(ratio) || std::abs(ratio) < 0.1 || isNear(ratio, 1.0))
        return u"1:1"_s;
    if (isNear(ratio, 1.33))
        return u"4:3"_s;
    if (isNear(ratio, 1.77))
        return u"16:9"_s;

    const int thousandths = truncatedTo<int>(r * 1000.0F);
    const int divisor = std::gcd(thousandths, 1000);
    QString fraction = filled(u"%ld:%ld", thousandths / divisor, 1000 / divisor);
    logLine(u"float2FractionStr : %@ (<-%.3f)", fraction, r);
    return fraction;
}

float versionStr2Float(const QString &text)
{
    float version = 0;
    float weight = 1;
    const QStringList fields = text.split(u'.').mid(0, 3);
    for (const QString &field : fields) {
        version += str2Float(field) / weight;
        weight *= 100;
    }
    logDebug(u"returnedFloat       : %f", version);
    return version;
}

float nbArrondi(float v, int n)
{
    // The product is single precision, so that 1.005 counts as the 1.005 it stands for.
    const float scale = scaleOf(n);
    const float scaled = v * scale;
    const double half = n > 0 && v < 0 ? -0.5 : 0.5;
    const float rounded =
        std::isfinite(scaled) ? static_cast<float>(std::trunc(scaled + half) / scale) : v;
    logDebug(u"nbArrondi            : %f", rounded);
    return rounded;
}

float nbTrimmed(float v, int n)
{
    const float scale = scaleOf(n);
    const float scaled = v * scale;
    const float trimmed = std::isfinite(scaled) ? std::trunc(scaled) / scale : v;
    logDebug(u"nbTrimmed           : %f", trimmed);
    return trimmed;
}

QString ASTID(const QString &s, const QString &separator, int k)
{
    logDebug(u"ASTID               - begin : (%@) %@", separator, s);
    if (s.isNull())
        return u""_s;
    if (separator.isNull())
        return s;
    if (s == QString::number(s.toLongLong())) {
        logDebug(u"ASTID               - NSInteger detected ;-)");
        return s;
    }
    if (s == filled(u"%f", s.toFloat())) {
        logDebug(u"ASTID               - float detected ;-)");
        return s;
    }
    if (separator.isEmpty() || !s.contains(separator))
        return s;

    const QStringList fields = s.split(separator);
    qsizetype index = k;
    if (k == lastButOneField)
        index = fields.size() - 2;
    else if (k == lastField)
        index = fields.size() - 1;
    return fields.value(index, s);
}

float str2Float(const QString &text)
{
    if (text.isNull())
        return 0;
    static const QRegularExpression leadingNumber(
        u"^\\p{L}*([-+]?(?:[0-9]+\\.?[0-9]*|\\.[0-9]+)(?:[eE][-+]?[0-9]+)?)"_s);
    const QString compact = findAndReplace(text, u" "_s, u""_s, false);
    const QRegularExpressionMatch match = leadingNumber.match(compact);
    if (!match.hasMatch()) {
        logDebug(u"mais heuu, c'est meme pas un float :(");
        return 0;
    }
    constexpr double largest = std::numeric_limits<float>::max();
    auto value = static_cast<float>(qBound(-largest, match.captured(1).toDouble(), largest));
    // Kept from printing as the thousandth below.
    const double thousandths = 1000.0 * value;
    if (value != 0 && std::trunc(thousandths) > thousandths)
        value += 0.0001F;
    logDebug(u"str2Float           - end :'%@'->%f", text, value);
    return value;
}

float fractionStr2Float(const QString &text)
{
    if (text.isNull())
        return 1;
    float ratio = 0;
    if (text.contains(u':')) {
        ratio = str2Float(text.section(u':', 0, 0)) / str2Float(text.section(u':', 1, 1));
        logDebug(u"fractionStr2Float :-) %.3f (<-%@)", ratio, text);
    } else {
        ratio = str2Float(text);
        logLine(u"fractionStr2Float :-/ %.3f (<-%@)", ratio, text);
    }
    return std::isfinite(ratio) && std::abs(ratio) >= 0.1F ? ratio : 1;
}

} // namespace vignar
