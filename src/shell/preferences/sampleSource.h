#pragma once

#include "classShared/sourceDico.h"

namespace vignar
{

/// The record of a video that does not exist, for a preview without a row: an hour and a
/// half in 1920 × 1080.
SourceDico sampleSource();

/// Adds the texts that only an existing file has to the display dictionary of the sample.
void completeSampleTexts(Dico &display);

} // namespace vignar
