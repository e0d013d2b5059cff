#pragma once

#include <cmath>
#include <limits>

namespace vignar
{

/// The number without its fraction; beyond the range of the integer its nearest end,
/// and 0 for what is no number. A plain cast would be undefined for both.
template <class Int>
Int truncatedTo(double number)
{
    // Twice the power of two below the maximum: exact, where the maximum itself is not.
    constexpr double limit = 2.0 * static_cast<double>(std::numeric_limits<Int>::max() / 2 + 1);
    if (std::isnan(number))
        return 0;
    if (number >= limit)
        return std::numeric_limits<Int>::max();
    if (number <= -limit)
        return std::numeric_limits<Int>::min();
    return static_cast<Int>(number);
}

} // namespace vignar
