#pragma once

#include "sheet/pictureIndex.h"

#include <optional>

namespace vignar
{

/// What an index tells of the picture that a pass with the intra selection takes.
struct IntraSearch {
    enum class Outcome { found, none, unclear };

    Outcome outcome = Outcome::unclear;
    /// When found.
    CodedPicture picture;
};

/// Looks for the first intra picture shown at an instant (seconds) or after it, but before so
/// many seconds are over. The pictures before it are looked at as well: not every intra picture
/// is a sync picture.
IntraSearch intraPictureAt(PictureIndex &index, double instant, double seconds);

/// The instant in ticks, rounded as ffmpeg rounds it.
qint64 ticksOf(double instant, const PictureIndex &index);

} // namespace vignar
