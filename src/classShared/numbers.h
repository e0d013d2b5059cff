#pragma once

#include <QString>

namespace vignar
{

/// A divisor that a and b share, near the asked divisor d, or -1 (also for
/// d ≤ 0).
int nbsSousMultipleCommun(int a, int b, int d, bool evenOnly);

/// v rounded to the nearest multiple of m; half a step, itself rounded down to a whole
/// number, rounds up. v itself for m ≤ 0.
int nbMultipleArrondi(int v, int m);

/// An aspect ratio as text: "1:1", "4:3" and "16:9" within 0.02, else the reduced
/// fraction of thousandths ("37:20").
QString float2FractionStr(float r);

/// "10.6.8" as 10.0608: each further field counts a hundredth of the one before;
/// a fourth field and later ones are ignored.
float versionStr2Float(const QString &text);

/// v rounded to n decimals (n ≥ 0), half away from zero; n = 0 truncates v + 0.5,
/// so that -2.7 gives -2.
float nbArrondi(float v, int n);

/// v cut toward zero after n decimals (n ≥ 0).
float nbTrimmed(float v, int n);

/// The last-but-one and the last field, as indexes for ASTID().
inline constexpr int lastButOneField = 666;
inline constexpr int lastField = 777;

/// s itself when it is a number or holds no separator, else its field k (from 0).
QString ASTID(const QString &s, const QString &separator, int k);

/// The first number in the text, blanks and letters before it skipped; 0 when none.
float str2Float(const QString &text);

/// "16:9" or a plain number as a ratio; 1.0 for a null text or a magnitude below 0.1.
float fractionStr2Float(const QString &text);

} // namespace vignar
