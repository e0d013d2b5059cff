#pragma once

#include "classShared/result.h"

#include <QStringList>
#include <QTemporaryDir>

#include <memory>

namespace vignar
{

/// The name of the folder that a plan gives to a sheet's pictures.
inline constexpr QLatin1String extractedImgName{"extractedImg"};

/// A folder in the work folder that receives the pictures of one sheet. Only the user may
/// enter it, and it is removed together with the object.
class ExtractionFolder
{
public:
    /// The reason of a failure names the work folder.
    static Result<ExtractionFolder> make();

    QString path() const { return m_folder->path(); }

private:
    explicit ExtractionFolder(std::unique_ptr<QTemporaryDir> folder);

    std::unique_ptr<QTemporaryDir> m_folder;
};

/// The folder that a plan names for the pictures of a sheet: "extractedImg" below dstPath (a
/// path without extension, beside the sheet). Plans that are only printed name it; no run
/// creates it.
QString plannedExtractionFolder(const QString &dstPath);

/// The picture files in a folder, in index order; empty ones, which a failed pass leaves, do
/// not count.
QStringList extractedPictures(const QString &path);

} // namespace vignar
