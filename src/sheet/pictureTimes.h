#pragma once

#include <QStringList>

#include <optional>

namespace vignar
{

/// The end of a filter text that has ffmpeg tell the time of each picture, under the
/// picture's number.
QString timeTeller(int number);

/// True when a filter text tells times.
bool tellsTimes(const QString &filter);

/// The same filter text telling under another name, for a second output of one run that
/// takes the same picture.
QString tellingAsSubstitute(const QString &filter);

/// Seconds from the start of the source at which the picture that a pass has taken is
/// shown, from the report of its run or of one in its place; nothing when it does not tell.
/// A run-up's pictures before the instant are passed over.
std::optional<double> toldTime(const QString &report, const QStringList &pass, int number,
                               bool isSubstitute = false);

} // namespace vignar
