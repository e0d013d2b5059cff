#pragma once

#include "classShared/sourceDico.h"

#include <optional>

namespace vignar
{

struct SheetOutcome;

/// Seconds of pictures that a source holds, whatever its header states: ffmpeg reads it through
/// without decoding anything (blocking). Nothing where that takes longer than two minutes or
/// fails.
std::optional<double> measuredDuration(const SourceDico &source);

/// True where a source cannot be planned by the duration that its record has.
bool isOverstated(const SourceDico &source, std::optional<double> measured);

/// The record of a source whose header lied.
SourceDico withDuration(SourceDico source, double measured);

/// What the user is to be told of it, in one line; null where nothing was measured.
QString durationNote(const SheetOutcome &outcome);

} // namespace vignar
