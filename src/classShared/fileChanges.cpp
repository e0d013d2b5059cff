#include "classShared/fileChanges.h"

#include "classShared/fileNames.h"
#include "classShared/files.h"
#include "classShared/paths.h"

#include <QDir>
#include <QFileInfo>

#include <mutex>
#include <utility>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

struct FolderWatch {
    std::mutex mutex;
    std::function<void(const QString &)> handler;
};

FolderWatch &folderWatch()
{
    static FolderWatch watch;
    return watch;
}

} // namespace

bool isThere(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

QString itemPath(const QString &path)
{
    const QString expanded = expandTilde(path);
    if (!expanded.startsWith(u'/'))
        return {};
    const QString name = lastPathComponent(expanded);
    if (name == "."_L1 || name == ".."_L1)
        return resolvedPath(expanded);
    return QDir::cleanPath(joinedPath(resolvedPath(containingFolder(expanded)), name));
}

bool isInside(const QString &path, const QString &folder)
{
    return path == folder || path.startsWith(joinedPath(folder, u""_s));
}

void setFolderChangedHandler(std::function<void(const QString &folder)> handler)
{
    FolderWatch &watch = folderWatch();
    const std::lock_guard lock(watch.mutex);
    watch.handler = std::move(handler);
}

void tellFolderChanged(const QString &item)
{
    std::function<void(const QString &)> handler;
    {
        FolderWatch &watch = folderWatch();
        const std::lock_guard lock(watch.mutex);
        handler = watch.handler;
    }
    if (handler)
        handler(containingFolder(item));
}

} // namespace vignar
