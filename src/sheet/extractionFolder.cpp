#include "sheet/extractionFolder.h"

#include "classShared/format.h"
#include "settings/stringTables.h"
#include "sheet/extractionPasses.h"
#include "tasks/workFolder.h"

#include <QDir>

#include <algorithm>

namespace vignar
{

using namespace Qt::StringLiterals;

Result<ExtractionFolder> ExtractionFolder::make()
{
    // Sheets of hours and days go through here: something may have cleared the temporary
    // folder meanwhile.
    renewWorkFolder();
    auto folder = std::make_unique<QTemporaryDir>(workFolder() + u"/pictures-XXXXXX"_s);
    if (!folder->isValid())
        return Failure{filled(localised(u"V_reason_workFolder"_s), workFolder())};
    return ExtractionFolder(std::move(folder));
}

ExtractionFolder::ExtractionFolder(std::unique_ptr<QTemporaryDir> folder)
    : m_folder(std::move(folder))
{
}

QString plannedExtractionFolder(const QString &dstPath)
{
    return QDir::cleanPath(QDir().absoluteFilePath(dstPath)) + u'/' + extractedImgName;
}

QStringList extractedPictures(const QString &path)
{
    QList<std::pair<int, QString>> found;
    for (const QFileInfo &entry : QDir(path).entryInfoList(QDir::Files, QDir::Name)) {
        const int index = thumbnailIndex(entry.fileName());
        if (index >= 0 && entry.size() > 0)
            found.emplace_back(index, entry.filePath());
    }
    std::sort(found.begin(), found.end());
    QStringList pictures;
    for (const auto &[index, picture] : found)
        pictures += picture;
    return pictures;
}

} // namespace vignar
