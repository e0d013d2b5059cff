#pragma once

#include "app/sheetDestination.h"
#include "classShared/result.h"
#include "classShared/wholeFile.h"

namespace vignar
{

/// Success where sheets can be written to a folder; the bundle's own is made where it is
/// missing.
Result<void> preparedDestination(const QString &folder);

/// Success where the folder's volume has room for a sheet; else the user is told.
Result<void> checkedSpace(const QString &folder);

/// What was settled about the names of a row's files.
struct PlacesSettled {
    enum class Sheet {
        make,
        keep,
        /// The name belongs to a file that an answer for all does not cover.
        elsewhere
    };

    Sheet sheet = Sheet::make;
    /// The files that may be replaced.
    Agreements agreed;
};

/// The files beside a sheet that the preferences ask for.
QStringList sideFiles(const SheetTarget &target);

/// Settles what becomes of the files that bear the names of a row. A sheet and what goes with
/// it are one question, a file without its sheet is one by itself, and what nobody answers is
/// kept. An answer given to a question covers the files that it names, whatever they are; one
/// given for all, or beforehand, covers what bears our mark. isOneOfSeveral: the answer may
/// be made to hold for the sheets that follow. A failure where a folder bears the name.
Result<PlacesSettled> settlePlaces(const SheetTarget &target, SheetFormat format,
                                   bool isOneOfSeveral);

/// The agreement to replace those of the files that are there and bear our mark.
Agreements ownFiles(const QStringList &paths);

/// True when a sheet would be made there without the user being asked or told anything:
/// a folder that can be written to with room in it, and no file in the way that is not
/// settled already.
bool isMadeWithoutAsking(const SheetTarget &target, SheetFormat format);

} // namespace vignar
