#include "classShared/files.h"

#include "classShared/fileChanges.h"
#include "classShared/fileNames.h"
#include "classShared/lineLog.h"
#include "classShared/paths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <filesystem>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

/// What the account says of the home folder, whatever the environment says.
const QStringList &accountHomes()
{
    static const QStringList homes = [] {
        const passwd *account = getpwuid(getuid());
        if (!account)
            return QStringList();
        const QString login = QFile::decodeName(account->pw_name);
        return QStringList{QFile::decodeName(account->pw_dir), u"/Users/"_s + login,
                           u"/home/"_s + login};
    }();
    return homes;
}

/// True for a path that stands in the text of the home folder's path.
bool isHomeOrAbove(const QString &path)
{
    const QStringList homes =
        accountHomes() + QStringList{QDir::homePath(), resolvedPath(QDir::homePath())};
    return std::any_of(homes.begin(), homes.end(),
                       [&path](const QString &home) { return home.contains(path); });
}

/// Folders whose entries belong to the system, to a user or to a volume each.
const QStringList &sharedRoots()
{
    static const QStringList roots{u"/"_s,      u"/Users"_s, u"/Volumes"_s,  u"/home"_s,
                                   u"/media"_s, u"/mnt"_s,   u"/run/media"_s};
    return roots;
}

bool isInSharedRoot(const QString &path)
{
    return sharedRoots().contains(path) || sharedRoots().contains(containingFolder(path)) ||
           sharedRoots().contains(fichier_dirname(path));
}

bool isWildcard(const QString &path)
{
    if (path.startsWith(u'*') || path.startsWith("/Volumes/Users/*"_L1))
        return true;
    return std::any_of(sharedRoots().begin(), sharedRoots().end(), [&path](const QString &root) {
        return path.startsWith(joinedPath(root, u"*"_s));
    });
}

/// True for a folder that lies on another volume than the one that holds it.
bool isVolumeRoot(const QString &path)
{
    struct stat item;
    struct stat folder;
    return ::lstat(QFile::encodeName(path).constData(), &item) == 0 && S_ISDIR(item.st_mode) &&
           ::stat(QFile::encodeName(containingFolder(path)).constData(), &folder) == 0 &&
           item.st_dev != folder.st_dev;
}

bool isRemovalRefused(const QString &path)
{
    if (path.isEmpty() || isHomeOrAbove(path))
        return true;
    if (path.startsWith("/BRSauthoring"_L1))
        return false;
    if (isInSharedRoot(path) || isVolumeRoot(path)) {
        logLine(u"alerte de sécurité dirname");
        return true;
    }
    if (isWildcard(path)) {
        logLine(u"alerte de sécurité joker");
        return true;
    }
    return false;
}

/// A trash folder that does not exist yet must be made here: QFile of Qt 6.4 would move
/// the item into the current folder instead and report success.
bool moveToTrash(const QString &item)
{
    const QString trash =
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u"/Trash"_s;
    return QDir().mkpath(trash + u"/files"_s) && QDir().mkpath(trash + u"/info"_s) &&
           QFile::moveToTrash(item);
}

/// Removes a link itself and never what it leads to, also inside a folder.
bool removeItem(const QString &item)
{
    std::error_code error;
    std::filesystem::remove_all(nativePath(item), error);
    if (!isThere(item))
        return true;
    logLine(u"File current        :-( not deleted 1");
    if (moveToTrash(item))
        logLine(u"File current        :-/ …to trash");
    if (!isThere(item))
        return true;
    logLine(u"File current        :-( failure");
    return false;
}

/// The file name without the characters that a shell or a tool could trip over.
QString safeFileName(const QString &path)
{
    const QString allowed =
        u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789.,;'()-_"_s;
    QString name = lastPathComponent(path);
    name.removeIf([&allowed](QChar c) { return !allowed.contains(c); });
    // A name of points alone would lead out of the folder of the links.
    return name.isEmpty() || name == "."_L1 || name == ".."_L1 ? u"toto"_s : name;
}

} // namespace

bool rmCocoa(const QString &path)
{
    if (path.isNull())
        return false;
    logDebug(u"rmCocoa             - begin - %@", path);
    // The path is judged as it is written and as the file system understands it.
    const QString item = itemPath(path);
    if (isRemovalRefused(QDir::cleanPath(expandTilde(path))) || isRemovalRefused(item))
        return false;

    if (!isThere(item)) {
        logLine(u"Cocoa:does not exist:-/ ERR: %@ (%@)", u"no such item"_s, item);
        return true;
    }
    if (QFileInfo::exists(item))
        logDebug(u"File current        : exists: %@", item);
    else
        logLine(u"Cocoa:exists!!!     :-( %@", item);
    if (!removeItem(item))
        return false;

    tellFolderChanged(item);
    logLine(u"rmCocoa d           : %@", containingFolder(item));
    logLine(u"rmCocoa             - pre-fin");
    logLine(u"rmCocoa             - end - %@", item);
    return true;
}

bool mkdir(const QString &path)
{
    logLine(u"mkdir               :    '%@'", path);
    if (path.isEmpty())
        return false;
    const QString folder = QDir::cleanPath(expandTilde(path));
    // The permissions are 0777 less what the user's umask takes away, as for every
    // folder that a program makes; a second try helps when a parent has just gone.
    if (!QDir().mkpath(folder)) {
        logLine(u"mkdir               :-(  '%@'", folder);
        if (!QDir().mkpath(folder)) {
            logLine(u"mkdir               :-(( '%@'", folder);
            return false;
        }
    }
    logLine(u"mkdir               :-)  '%@'", folder);
    tellFolderChanged(folder);
    return true;
}

bool chmodPath(const QString &path, int modeCode, const QString &recursive)
{
    if (path.isNull())
        return false;
    if (recursive.toUpper() == "R"_L1)
        logLine(u"faudra voir comment faire de la récursivité …");
    constexpr mode_t everybody = 0777;
    constexpr mode_t ownerWrites = 0755;
    ::chmod(QFile::encodeName(expandTilde(path)).constData(),
            modeCode == 777 ? everybody : ownerWrites);
    return true;
}

bool ln_sCocoa(const QString &source, const QString &linkPath)
{
    if (source.isEmpty() || linkPath.isEmpty()) {
        logLine(u"ln_sCocoa           :-/ no input | output ('%@' | '%@')", source, linkPath);
        return false;
    }
    const QString target = expandTilde(source);
    const QString link = expandTilde(linkPath);
    if (target == link) {
        logLine(u"ln_sCocoa           :-/ identical input & output");
        return false;
    }
    std::error_code error;
    std::filesystem::create_symlink(nativePath(target), nativePath(link), error);
    if (error) {
        logLine(u"ln :-( %@", QString::fromStdString(error.message()));
        return false;
    }
    tellFolderChanged(link);
    return true;
}

QString toolPathSafe(const QString &path, const QString &folder)
{
    const QString linkFolder = expandTilde(folder);
    const bool hasFolder = !linkFolder.isEmpty() && QFileInfo(linkFolder).isDir();
    QString link =
        joinedPath(hasFolder ? linkFolder : QDir::tempPath(), safeFileName(expandTilde(path)));
    if (link.compare(expandTilde(path), Qt::CaseInsensitive) == 0)
        return path;

    // Only a link may be an earlier one of ours; any other item is the user's and stays.
    const bool isRemoved = QFileInfo(link).isSymLink() && rmCocoa(link);
    logLine(u"toolPathSafe symlink:-%@ rm (%@)", isRemoved ? u")"_s : u"("_s, link);
    if (ln_sCocoa(path, link))
        return link;
    logLine(u"toolPathSafe symlink:-( ln ('%@' -> '%@')", link, path);
    return path;
}

} // namespace vignar
