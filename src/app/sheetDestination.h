#pragma once

#include "classShared/sourceDico.h"
#include "sheet/sheetComposer.h"

#include <QSet>
#include <QString>

namespace vignar
{

/// The folder that sheets go to: the destination field's path, with the subfolder
/// "Vignar" appended where it lies under "~/Movies/" and is not that folder already.
QString destinationFolder(const QString &destinationField);

/// "-index" for the suffix preferences; empty when sheets get none. Separators and
/// control characters are made harmless, and what goes beyond 101 bytes is cut.
QString sheetSuffix(const QString &prefSuffix, bool isDiskPictureMade,
                    const QString &defaultSuffix);

/// The name of a source's sheet, without extension, from a template. Its fields are
/// {name} of the source, {suffix} with its hyphen, {date} of its creation, {width} and
/// {height} in pixels, {duration} ("1h02m05s"), {codec} and {folder}; what is unknown of
/// the source leaves nothing, and what is no field stays as it is. Separators and control
/// characters are made harmless, and what is too long for a file name is cut. Null where
/// no name is left: then a sheet is called as without a template.
QString nameFromTemplate(const QString &nameTemplate, const SourceDico &source,
                         const QString &suffix);

/// Where the files of one source go.
struct SheetTarget {
    /// Sheet path without extension.
    QString dstPath;
    QString diskPicturePath;
    /// The number in the names of all its files; 1: none.
    int number = 1;

    QString sheetFile(SheetFormat format) const { return sheetPath(dstPath, format); }
    /// The two files of a seek preview.
    QString spriteFile() const { return dstPath + QLatin1String("-sprite.jpg"); }
    QString vttFile() const { return dstPath + QLatin1String(".vtt"); }
};

/// What decides the names of a source's files.
struct SheetNaming {
    QString suffix;
    /// The sheet's own name; null: the source's with the suffix.
    QString sheetName = {};
    bool isPreviewMade = false;
    /// Smaller numbers belong to earlier sources of the same name.
    int firstNumber = 1;
};

/// The target of a source in a folder. Where an earlier source of the same run has
/// taken the name, a number is added; the names of the target join taken. A sheet that
/// would bear the name of its disk picture gets the suffix. The source's name is cut so that
/// it takes, with the suffix, at most 220 bytes; numbers and extensions come on top.
SheetTarget sheetTarget(const QString &folder, const QString &srcPath, const SheetNaming &naming,
                        QSet<QString> &taken);

} // namespace vignar
