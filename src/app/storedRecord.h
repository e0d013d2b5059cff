#pragma once

#include "classShared/sourceDico.h"

namespace vignar
{

/// The record as it is stored, and printed for scripts: its field orders by their keys ("PFF"),
/// not by their texts in the user's language.
SourceDico storedRecord(const SourceDico &record);

/// The record in the language in use, from a stored one whose field orders stand there by
/// their keys or, as older versions stored them, by their texts in any language.
SourceDico restoredRecord(const SourceDico &stored);

} // namespace vignar
