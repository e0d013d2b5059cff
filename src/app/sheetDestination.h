#pragma once

#include "sheet/sheetComposer.h"

#include <QSet>
#include <QString>

namespace vignar
{

/// The folder that sheets go to: the destination field's path, with the subfolder
/// "Vignar" appended where it lies under "~/Movies/" and is not that folder already.
QString destinationFolder(const QString &destinationField);

/// "-index" for the suffix preferences; empty when sheets get none. Separators and
/// control characters are made harmless.
QString sheetSuffix(const QString &prefSuffix, bool isDiskPictureMade,
                    const QString &defaultSuffix);

/// Where the files of one source go.
struct SheetTarget {
    /// Sheet path without extension.
    QString dstPath;
    QString diskPicturePath;

    QString sheetFile(SheetFormat format) const { return sheetPath(dstPath, format); }
};

/// The target of a source in a folder. Where an earlier source of the same run has
/// taken the name, a number is added; the names of the target join taken.
SheetTarget sheetTarget(const QString &folder, const QString &srcPath, const QString &suffix,
                        QSet<QString> &taken);

} // namespace vignar
