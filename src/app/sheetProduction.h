#pragma once

#include "classShared/result.h"
#include "classShared/wholeFile.h"
#include "sheet/blankPictures.h"
#include "sheet/pictureMatrix.h"
#include "sheet/seekPreview.h"
#include "sheet/sheetComposer.h"

#include <QHash>

#include <functional>
#include <optional>

namespace vignar
{

/// Blank pictures, and the passes of the next round that takes them again.
struct BlankCheck {
    BlankRetakes retakes;
    /// Empty: nothing is to be taken again.
    Dico passes;
};

/// Any thread, one at a time for a folder.
BlankCheck checkBlanks(BlankRetakes retakes, const SourceDico &source);

/// All that the files of one row are made of, so that any thread can make them.
struct SheetProduction {
    /// As sheetDisplay() with the paths of source and sheet. Its pictures and the times
    /// told of them are filled in here.
    Dico display;
    SheetFormat format = SheetFormat::jpeg;
    QString pictureFolder;
    /// Pictures that were planned.
    int planned = 0;
    /// Picture file to the seconds at which it is shown, as far as told.
    QHash<QString, double> shownAt;
    BlankRetakes retakes;
    /// That of the pictures, where it is not the one that their readers assume.
    std::optional<LumaWeights> matrix;
    /// The sheet is there already: only what goes with it is made.
    bool isSheetKept = false;
    /// The files that may be replaced.
    Agreements agreed;
    /// Null: no disk picture.
    QString diskPicture;
    /// Its pictures and their size are filled in here.
    std::optional<SeekPreview> preview;
};

/// What became of it.
struct SheetProduct {
    /// It was stopped before anything was written.
    bool isStopped = false;
    /// Pictures on the sheet.
    int thumbnails = 0;
    Result<void> sheet;
    /// How the writing of each file ended, by its path; what was not begun is not there.
    QHash<QString, WriteEnd::State> ends;
};

/// Makes the sheet, the disk picture and the seek preview of a row whose pictures are all
/// there. A stop that is wanted before the sheet is to take its place leaves what was there;
/// one that comes later changes nothing any more, so that a sheet never lacks what belongs
/// to it. Nothing is replaced but what was agreed to: where another file has come to the
/// sheet's name the sheet fails, and the end of its path says that it is taken. Any thread.
SheetProduct produceSheet(const SheetProduction &production,
                          const std::function<bool()> &isStopWanted = {});

} // namespace vignar
