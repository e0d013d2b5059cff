#include "sheet/plannedSource.h"

#include <algorithm>
#include <limits>

namespace vignar
{

namespace
{

int side(std::optional<int> stored, int unknown)
{
    return stored && *stored > 0 ? *stored : unknown;
}

} // namespace

int plannedSeconds(const SourceDico &source)
{
    const double seconds = read(source, Keys::w_duration).value_or(10);
    // A damaged header can announce any number, also one that no integer holds.
    if (!(seconds > 0))
        return 0;
    return static_cast<int>(std::min<double>(seconds, std::numeric_limits<int>::max()));
}

QSize storedSize(const SourceDico &source)
{
    return {side(read(source, Keys::v_width, 0), 1280), side(read(source, Keys::v_height, 0), 960)};
}

std::optional<int> namedStream(const SourceDico &source)
{
    if (!contains(source, Keys::w_videos))
        return std::nullopt;
    return read(source, Keys::v_id, 0);
}

} // namespace vignar
