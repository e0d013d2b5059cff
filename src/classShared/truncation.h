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
    // A power of two, so exact as a double, where the maximum itself need not be.
    constexpr double limit = -static_cast<double>(std::numeric_limits<Int>::min());
    if (std::isnan(number))
        return 0;
    if (number >= limit)
        return std::numeric_limits<Int>::max();
    if (number <= -limit)
        return std::numeric_limits<Int>::min();
    return static_cast<Int>(number);
}

} // namespace vignar
