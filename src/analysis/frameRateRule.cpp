#include "analysis/frameRateRule.h"

#include "analysis/mediaClasses.h"
#include "classShared/lineLog.h"
#include "classShared/sourceDico.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace vignar
{
namespace
{

constexpr double leastClaim = 0.1;
constexpr double leastMeasurement = 0.4;
constexpr double sameRate = 0.6;

double atLeast(double rate, double least)
{
    return rate >= least ? rate : 0;
}

/// Containers whose rate the movie framework measures wrongly.
bool isUnmeasurable(const QString &extension)
{
    return QStringList{u"avi"_s, u"mkv"_s, u"flv"_s}.contains(extension, Qt::CaseInsensitive);
}

/// The better of two rates that differ, or the one that there is.
double preferredRate(double ff, double qt)
{
    const bool isFfOdd = ff <= 1 || ff > 120;
    return ff > 0 && qt > 0 && isFfOdd ? qt : std::max(ff, qt);
}

double claimedOrMeasuredRate(const FrameRateClaims &claims, const FrameRateContext &context)
{
    const double ff = atLeast(claims.ff, leastClaim);
    const double qt = atLeast(claims.qt, leastClaim);
    if (ff > 0 && qt > 0 && std::abs(ff - qt) <= sameRate)
        return std::max(ff, qt);
    if (context.isMpegReaderFailed && context.isMovieFrameworkUsable && qt <= 0 &&
        !isUnmeasurable(context.extension)) {
        if (const double measured = atLeast(context.measureMovie(), leastMeasurement); measured > 0)
            return measured;
    }
    return preferredRate(ff, qt);
}

} // namespace

double reconciledFrameRate(const FrameRateClaims &claims, const FrameRateContext &context)
{
    if (claims.mp > 0 && !context.isMpegReaderFailed)
        return claims.mp;
    double rate = claimedOrMeasuredRate(claims, context);
    if (rate <= leastClaim && context.isMovieFrameworkUsable && isMpegExtension(context.extension))
        rate = atLeast(context.measureExtract(), leastMeasurement);
    if (rate > leastClaim)
        return rate;
    logLine(u"analyseSrc - fps def= %@", unknownFrameRate);
    return unknownFrameRate;
}

} // namespace vignar
