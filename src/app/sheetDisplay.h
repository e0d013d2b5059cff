#pragma once

#include "classShared/sourceDico.h"

namespace vignar
{

/// What the preferences make of a planned display dictionary: layout, colours and frames
/// written, the texts that are not wanted on the sheet left out.
Dico sheetDisplay(const Dico &planned, int layout);

} // namespace vignar
