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
    /// The folders that our runs have made here, innermost first; path is one of them.
    QStringList made;
};

/// Where the pictures of a sheet would go; creates nothing.
QString plannedExtractionFolder(const QString &dstPath);

/// Makes an extraction folder without pictures below dstPath (a path without extension,
/// beside the sheet), with its missing parents. A folder that is not ours is never cleared:
/// one of ours left by a dead run loses its pictures, anything else, a living run's
/// included, is stepped around with a numbered name. It is held until its release or the
/// end of the process. The reason of a failure names the folder. Main thread only.
Result<ExtractionFolder> claimExtractionFolder(const QString &dstPath);

/// Removes the pictures and the extraction folder if it is ours, then those of made that
/// are empty. A folder into which somebody else has put a file stays with that file.
void releaseExtractionFolder(const QString &path, const QStringList &made);

/// The picture files in it, in index order; empty ones, which a failed pass leaves, do not
/// count.
QStringList extractedPictures(const QString &path);

} // namespace vignar
