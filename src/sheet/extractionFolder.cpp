#include "sheet/extractionFolder.h"

#include "classShared/format.h"
#include "settings/stringTables.h"
#include "sheet/extractionPasses.h"

#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QRegularExpression>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// In a folder that is ours; holds how many of the folders above were made for it. It
/// outlives a crash, so that the next run knows the folder again.
constexpr QLatin1String markerName{".vignar-extraction"};
/// Beside it while the owner lives.
constexpr QLatin1String lockName{".vignar-extraction.lock"};
constexpr int namesTried = 1000;
constexpr int attempts = 20;

/// The locks of the folders in use by this process. A run's state is kept as texts
/// between its steps, so the lock cannot travel with it. Main thread only.
std::map<QString, std::unique_ptr<QLockFile>> &heldLocks()
{
    static std::map<QString, std::unique_ptr<QLockFile>> locks;
    return locks;
}

/// The folder's lock, or null while another owner lives.
std::unique_ptr<QLockFile> takeLock(const QString &folder)
{
    auto lock = std::make_unique<QLockFile>(folder + u'/' + lockName);
    // An extraction may take hours: only the end of its process makes a lock stale.
    lock->setStaleLockTime(0);
    return lock->tryLock() ? std::move(lock) : nullptr;
}

/// True for a link as well, also for one that leads nowhere.
bool isTaken(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

/// True for a folder that one of our runs made. Links are never followed: who planted
/// one decides what lies behind it.
bool isOurs(const QString &folder)
{
    const QFileInfo info(folder);
    const QFileInfo marker(folder + u'/' + markerName);
    return info.isDir() && !info.isSymLink() && marker.isFile() && !marker.isSymLink();
}

bool writeMarker(const QString &folder, qsizetype parentsMade)
{
    QFile marker(folder + u'/' + markerName);
    return marker.open(QIODevice::WriteOnly | QIODevice::NewOnly) &&
           marker.write(QByteArray::number(parentsMade)) > 0 && marker.flush();
}

qsizetype markedParents(const QString &folder)
{
    QFile marker(folder + u'/' + markerName);
    if (!marker.open(QIODevice::ReadOnly))
        return 0;
    return std::max(marker.read(16).toInt(), 0);
}

/// Removes the pictures, unfinished ones included, and nothing that somebody else has
/// put into the folder since. False when one is left.
bool removePictures(const QString &folder)
{
    static const QRegularExpression pattern(u"^\\.?img[0-9]+\\.jpg"_s);
    bool isAllGone = true;
    const QDir::Filters filters = QDir::Files | QDir::Hidden | QDir::System;
    for (const QFileInfo &entry : QDir(folder).entryInfoList(filters)) {
        if (pattern.match(entry.fileName()).hasMatch())
            isAllGone = QFile::remove(entry.filePath()) && isAllGone;
    }
    return isAllGone;
}

/// The folder and those above it, innermost first.
QStringList withParents(const QString &folder, qsizetype parents)
{
    QStringList folders{folder};
    while (folders.size() <= parents && folders.last() != u"/")
        folders += QFileInfo(folders.last()).path();
    return folders;
}

void removeEmptyFolders(const QStringList &folders)
{
    for (const QString &folder : folders)
        QDir().rmdir(folder);
}

/// Makes the folder with its missing parents. The folders made, innermost first, or
/// nothing when that failed; then what had been made is gone again.
std::optional<QStringList> makeFolders(const QString &folder)
{
    QStringList missing;
    for (QString above = folder; !isTaken(above); above = QFileInfo(above).path())
        missing.prepend(above);
    QStringList made;
    for (const QString &next : missing) {
        if (QDir().mkdir(next)) {
            made.prepend(next);
        } else if (!QFileInfo(next).isDir()) {
            removeEmptyFolders(made);
            return std::nullopt;
        }
    }
    return QFileInfo(folder).isDir() ? std::optional(made) : std::nullopt;
}

/// Makes a folder that must not exist yet and marks it as ours. The lock comes first:
/// a folder with a marker and no lock would be free for the taking.
bool makeOwnFolder(const QString &folder, qsizetype parentsMade)
{
    if (!QDir().mkdir(folder))
        return false;
    auto lock = takeLock(folder);
    if (!lock || !writeMarker(folder, parentsMade)) {
        QFile::remove(folder + u'/' + markerName);
        lock.reset();
        QDir().rmdir(folder);
        return false;
    }
    heldLocks()[folder] = std::move(lock);
    return true;
}

/// Takes over and empties a folder that a dead run of ours has left.
bool takeOverFolder(const QString &folder)
{
    if (!isOurs(folder))
        return false;
    auto lock = takeLock(folder);
    if (!lock)
        return false;
    if (!isOurs(folder)) {
        // Its owner released it just now, and our lock kept it from going.
        lock.reset();
        QDir().rmdir(folder);
        return false;
    }
    if (!removePictures(folder))
        return false;
    heldLocks()[folder] = std::move(lock);
    return true;
}

/// dstPath, or dstPath with a number where a file bears that name: a source without
/// extension may lie where its sheet goes.
QString baseFolder(const QString &dstPath)
{
    const QString wanted = QDir::cleanPath(QDir().absoluteFilePath(dstPath));
    QString base = wanted;
    for (int number = 1; isTaken(base) && !QFileInfo(base).isDir(); ++number)
        base = filled(u"%@-%ld", wanted, number);
    return base;
}

QString numberedFolder(const QString &base, int number)
{
    const QString folder = base + u'/' + extractedImgName;
    return number == 0 ? folder : filled(u"%@-%ld", folder, number);
}

/// An extraction folder below base, or nothing, with what was made for it gone again.
std::optional<ExtractionFolder> claimBelow(const QString &base)
{
    const auto madeNow = makeFolders(base);
    if (!madeNow)
        return std::nullopt;
    qsizetype parentsMade = madeNow->size();
    for (int number = 0; number < namesTried; ++number) {
        const QString folder = numberedFolder(base, number);
        // Whoever of us made the parents, the last to leave them removes them.
        if (isOurs(folder))
            parentsMade = std::max(parentsMade, markedParents(folder));
        if (takeOverFolder(folder) || makeOwnFolder(folder, parentsMade))
            return ExtractionFolder{folder, withParents(folder, parentsMade)};
        if (!isTaken(folder))
            break;
    }
    removeEmptyFolders(*madeNow);
    return std::nullopt;
}

} // namespace

QString plannedExtractionFolder(const QString &dstPath)
{
    return numberedFolder(baseFolder(dstPath), 0);
}

Result<ExtractionFolder> claimExtractionFolder(const QString &dstPath)
{
    const QString base = baseFolder(dstPath);
    // Another process may be removing the folders that ours is just being made in.
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (const auto folder = claimBelow(base))
            return *folder;
    }
    return Failure{filled(localised(u"V_reason_destination"_s), QFileInfo(base).path())};
}

void releaseExtractionFolder(const QString &path, const QStringList &made)
{
    const QString folder = QDir::cleanPath(path);
    auto held = heldLocks().extract(folder);
    if (isOurs(folder)) {
        if (auto lock = held ? std::move(held.mapped()) : takeLock(folder)) {
            removePictures(folder);
            QFile::remove(folder + u'/' + markerName);
            lock.reset();
            QDir().rmdir(folder);
        }
    }
    removeEmptyFolders(made);
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
