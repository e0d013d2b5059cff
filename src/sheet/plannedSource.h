#pragma once

#include "classShared/sourceDico.h"

#include <QSize>

#include <optional>

namespace vignar
{

/// Whole seconds of the source, 0 or more; 10 when the duration is unknown.
int plannedSeconds(const SourceDico &source);

/// Picture size as stored in the file, in pixels, each side 1 or more; a side that is
/// unknown is that of 1280 × 960.
QSize storedSize(const SourceDico &source);

/// ffmpeg's index of the video stream to name to it: where there are several to choose from.
std::optional<int> namedStream(const SourceDico &source);

} // namespace vignar
