#pragma once

#include "classShared/result.h"

#include <QStringList>

namespace vignar
{

/// The name of the folder that receives the pictures, inside the sheet's own folder.
inline constexpr QLatin1String extractedImgName{"extractedImg"};

/// An extraction folder and what had to be made for it.
struct ExtractionFolder {
    QString path;
    /// Folders that did not exist before, innermost first; path is one of them.
    QStringList made;
};

/// Where the pictures of a sheet would go; creates nothing.
QString plannedExtractionFolder(const QString &dstPath);

/// Makes an empty extraction folder below dstPath (a path without extension, beside the
/// sheet). A folder that is not ours is never cleared: one of ours left by a dead run is
/// emptied, anything else is stepped around with a numbered name.
Result<ExtractionFolder> claimExtractionFolder(const QString &dstPath);

/// Removes the extraction folder if it is ours, then those of made that are empty.
void releaseExtractionFolder(const QString &path, const QStringList &made);

/// The picture files in it, in index order.
QStringList extractedPictures(const QString &path);

} // namespace vignar
