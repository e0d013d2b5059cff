#pragma once

#include "shell/preferences/colourPresets.h"

namespace vignar
{

class ChoiceRow;

/// The colour presets and the user's own colours: a segment of Prefs::prefColor each.
ChoiceRow *makePresetChooser();

} // namespace vignar
