#pragma once

#include <QString>

namespace vignar
{

/// Seconds of a timecode: "h:m:s", "d:h:m:s", seconds with a decimal comma or as
/// "s.frames/rate", or a plain number. Two fields, or a null text, give 0.
float timecodeStr2Float(const QString &text);

/// Whole seconds of "1h02'05\"", or the text's integer value.
int secondesStr2Int(const QString &text);

/// "-07.3'" for 7.3 minutes; empty for 0 and below.
QString duree2MinutesStr(float minutes);

/// "1h02'05\"" for 3725 seconds.
QString duree2HmsStr(int seconds);

/// "1:02:05.05" for 3725.05 seconds with two decimals; decimals are capped at 3.
/// padHours writes the hours with two digits, but only when decimals are asked for.
QString duree2TimecodeStr(float seconds, int decimals, bool padHours);

} // namespace vignar
