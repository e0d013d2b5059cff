#pragma once

#include "app/sheetDestination.h"
#include "classShared/result.h"

#include <optional>

namespace vignar
{

struct SheetOutcome;

/// Success where sheets can be written to a folder; the bundle's own is made where it is
/// missing.
Result<void> preparedDestination(const QString &folder);

/// Success where the folder's volume has room for a sheet; else the user is told.
Result<void> checkedSpace(const QString &folder);

/// True when the user, asked unless an earlier answer holds for all, lets a file be
/// replaced. isOneOfSeveral: the answer may be made to hold for the sheets that follow.
bool mayReplace(const QString &path, bool isOneOfSeveral);

/// Asks about the files that stand where those of a row go. What is kept beside the sheet
/// is noted in the outcome; a sheet that is kept is a failure, and the outcome says so.
Result<void> askedToReplace(const SheetTarget &target, bool isOneOfSeveral, SheetOutcome &outcome);

/// True when a sheet would be made there without the user being asked or told anything:
/// a folder that can be written to with room in it, and no file in the way that is not
/// settled already.
bool isMadeWithoutAsking(const SheetTarget &target, SheetFormat format);

} // namespace vignar
