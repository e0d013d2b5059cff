#pragma once

#include "app/rowChoices.h"
#include "app/sheetDestination.h"
#include "classShared/sourceDico.h"
#include "sheet/thumbnailPlan.h"

namespace vignar
{

/// What the preferences make of a planned display dictionary: layout, colours and frames
/// written, the texts that are not wanted on the sheet left out.
Dico sheetDisplay(const Dico &planned, int layout);

/// Success where the sheet of a plan can be made; else the reason.
Result<void> checkedPlan(const SheetPlan &plan, const RowChoices &choices);

/// True when the preferences ask for a disk picture beside each sheet.
bool isDiskPictureWanted();

/// The names that the preferences give to the files of a source.
SheetNaming sheetNaming(const SourceDico &source);

} // namespace vignar
