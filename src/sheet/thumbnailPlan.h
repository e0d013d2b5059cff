#pragma once

#include "classShared/sourceDico.h"

#include <QSize>

#include <set>
#include <vector>

namespace vignar
{

/// Columns and largest number of rows of a layout; any index but 0, 1 and 2 is Mix.
struct LayoutGrid {
    int columns;
    int maxRows;
};
LayoutGrid layoutGrid(int layout);

/// How many pictures a sheet holds and where they are taken.
struct ThumbnailPlan {
    /// 0: nothing to extract.
    int count = 0;
    /// The count follows the fixed interval and need not fill whole rows.
    bool isCountFixed = false;
    /// Seconds between two instants.
    double interval = 0;
    /// Those that were asked for; 0: none. They do not hold where they would make more
    /// pictures than the sheet may have.
    int askedInterval = 0;
    /// Seconds from the start of the source, never descending: those of a short source
    /// may coincide at its end.
    std::vector<double> instants;
    /// One text an instant, "0:01:20.50"; null where none can be written.
    QStringList timecodes;
    /// Indices whose instant the user has chosen: the picture shown at that very instant.
    std::set<int> chosen;
    /// Size of each extracted picture in pixels, its pixels square.
    QSize size;
};

/// The text under a picture, "0:01:20.50"; null where none can be written.
QString timecodeText(double instant);

/// Plans from the record and the planning keys (thNumberInt, thNumberAuto, thDerush,
/// thDerushInterval, thTrueTimecode) in it.
ThumbnailPlan planThumbnails(int layout, const SourceDico &source);

/// Texts, picture size and timecode map of a planned sheet for the composer.
Dico plannedDisplay(const ThumbnailPlan &plan, const SourceDico &source);

/// The whole plan of a sheet as the step driver stores it.
struct SheetPlan {
    ThumbnailPlan thumbnails;
    /// Index text to argument list; at most one of the two is not empty.
    Dico ffmpegPasses;
    Dico grabberPasses;
    /// As plannedDisplay() ("appvgDisplay").
    Dico display;
};

/// Plans a sheet whose pictures go to extractionFolder. Touches no file. A source that
/// does not exist gives a plan without pictures and display.
SheetPlan planSheet(int layout, const SourceDico &source, const QString &extractionFolder);

} // namespace vignar
