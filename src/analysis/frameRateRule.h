#pragma once

#include <QString>

#include <functional>

namespace vignar
{

/// The frame rates that the readers state; 0 where one is silent.
struct FrameRateClaims {
    double mp = 0;
    double ff = 0;
    double qt = 0;
};

/// What else the rule looks at.
struct FrameRateContext {
    QString extension;
    bool isMpegReaderFailed = true;
    bool isMovieFrameworkUsable = false;
    /// Measure on the movie, and on a short extract of it; 0: not known.
    std::function<double()> measureMovie = [] { return 0.0; };
    std::function<double()> measureExtract = [] { return 0.0; };
};

/// The frame rate that the claims come to, measured where they do not suffice;
/// unknownFrameRate where that fails too. The measurements are only called when needed.
double reconciledFrameRate(const FrameRateClaims &claims, const FrameRateContext &context);

} // namespace vignar
