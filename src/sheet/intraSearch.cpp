#include "sheet/intraSearch.h"

#include "sheet/pictureKinds.h"

#include <cmath>

namespace vignar
{

namespace
{

/// So many pictures at most may come between two in decoding order that are shown the other
/// way round (max_dec_frame_buffering of ITU-T H.264, A.3.1).
constexpr int longestReordering = 16;

} // namespace

qint64 ticksOf(double instant, const PictureIndex &index)
{
    // A false header may give times that no clock reaches; two of these still add up.
    constexpr qint64 farthest = qint64{1} << 61;
    const qint64 ticksASecond = index.ticksASecond();
    if (!(std::abs(instant) * double(ticksASecond) < double(farthest)))
        return instant < 0 ? -farthest : farthest;
    const double whole = std::floor(instant);
    const qint64 microseconds = std::llround((instant - whole) * 1e6);
    return qint64(whole) * ticksASecond + (microseconds * ticksASecond + 500'000) / 1'000'000;
}

IntraSearch intraPictureAt(PictureIndex &index, double instant, double seconds)
{
    const qint64 begin = ticksOf(instant, index);
    qint64 end = begin + ticksOf(seconds, index);
    const auto kinds = PictureKinds::of(index.coding());
    std::optional<CodedPicture> found;
    bool isClear = true;
    int since = 0;
    const bool isTold = index.visitFrom(begin, [&](const CodedPicture &picture) {
        const bool isWithin = picture.shownAt >= begin && picture.shownAt < end;
        since = picture.shownAt >= end ? since + 1 : since;
        if (isWithin || kinds->remembers()) {
            const PictureKind kind = kinds->kindOf(index, picture);
            isClear = kind != PictureKind::unclear;
            if (isWithin && kind == PictureKind::intra) {
                found = picture;
                end = picture.shownAt;
                since = 0;
            }
        }
        return isClear && since <= longestReordering;
    });
    if (!isTold || !isClear)
        return {};
    if (!found)
        return {.outcome = IntraSearch::Outcome::none, .picture = {}};
    return {.outcome = IntraSearch::Outcome::found, .picture = *found};
}

} // namespace vignar
