#pragma once

#include "classShared/sourceDico.h"

namespace vignar
{

/// The texts that a sheet prints about its source, in the interface language, under
/// the keys name, location, date, duration, vIdentity, poids, essence and comment. What is
/// unknown of an existing source is left out: a part of a text, or the whole key.
Dico infoTexts(const SourceDico &source);

} // namespace vignar
