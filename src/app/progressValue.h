#pragma once

#include <QString>

#include <optional>

namespace vignar
{

/// How the progress of a tool is read from its text.
enum ParseMode {
    parseCollected = -1,
    parseTime = 0,
    parseNothing = 1,
    parsePercentage = 2,
    parseBatch = 3,
    parseProcessing = 4,
    parseSteps = 5,
    parseIndeterminate = 6,
    parseBar = 7,
    /// Collected like parseCollected; the value that older settings hold.
    parseCollectedMaximum = 2147483647
};

/// The text before a mode's value; null for the modes that read none.
QString progressToken(int parseMode);

/// The value behind the token: seconds of a clock time for "time=" (three parts, else
/// 0), else the number that begins right after it; 0 when there is none.
float progressValue(const QString &text, const QString &token);

/// The previous value of a runner that has shown nothing yet.
inline constexpr double noPreviousValue = -123456.0;

/// The whole percent to show for a value, or nothing when the display stays as it is:
/// it only moves forward, and the last percent is shown by the end of the step.
std::optional<int> percentToShow(double value, double maximum, double previousValue);

/// Seconds of a source for each second that its sheet took: whole ones, and at least one.
double speedOf(double duration, qint64 milliseconds);

/// Loudness found in a tool's text, as text without its unit; null when absent.
QString maximumVolume(const QString &text);
QString averageLoudness(const QString &text);

} // namespace vignar
