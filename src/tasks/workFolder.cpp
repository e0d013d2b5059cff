#include "tasks/workFolder.h"

#include "classShared/files.h"
#include "classShared/lineLog.h"
#include "classShared/paths.h"
#include "settings/applicationPlaces.h"

#include <QDir>
#include <QLockFile>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>

#include <memory>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

constexpr QLatin1String desktopInstance{"desktop"};
constexpr QLatin1String lockSuffix{".lock"};

/// The work folder in use and, when setUpWorkFolder() made it, what shows that we live.
struct Current {
    QString path;
    QString userFolder;
    std::unique_ptr<QLockFile> lock;
};

Current &current()
{
    static Current only;
    return only;
}

bool makePrivateFolder(const QString &path)
{
    return ::mkdir(QFile::encodeName(path).constData(), S_IRWXU) == 0;
}

/// A real folder, not a link to one, that belongs to the user.
bool isOwnFolder(const QString &path)
{
    struct stat status = {};
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::geteuid();
}

QString inTemporaryFolder(const QString &name)
{
    return applicationPlaces().temporaryFolder() + u'/' + name;
}

QString userFolderPath()
{
    return inTemporaryFolder(bundleIdentifier + filled(u"-%u", ::geteuid()));
}

/// The folder that holds those of all of this user's runs; null when it is not his.
QString userFolder()
{
    const QString path = userFolderPath();
    makePrivateFolder(path);
    const bool isOurs =
        isOwnFolder(path) && ::chmod(QFile::encodeName(path).constData(), S_IRWXU) == 0;
    return isOurs ? path : QString();
}

QString uniqueUserFolder()
{
    QTemporaryDir folder(inTemporaryFolder(bundleIdentifier + "-XXXXXX"_L1));
    folder.setAutoRemove(false);
    return folder.isValid() ? folder.path() : QString();
}

/// The lock of a run's folder; null while the process that holds it lives.
std::unique_ptr<QLockFile> lockOf(const QString &folder)
{
    auto lock = std::make_unique<QLockFile>(folder + lockSuffix);
    // A run may take days: only the death of its process makes a lock stale, never age.
    lock->setStaleLockTime(0);
    return lock->tryLock(0) ? std::move(lock) : nullptr;
}

void removeDeadFolders(const QString &parent)
{
    static const QRegularExpression ourName(u"^((?:desktop|cli)(?:-[0-9a-f]{8})?)(?:\\.lock)?$"_s);
    QSet<QString> names;
    const QStringList entries = QDir(parent).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    for (const QString &entry : entries) {
        if (const auto match = ourName.match(entry); match.hasMatch())
            names << match.captured(1);
    }
    for (const QString &name : std::as_const(names)) {
        const QString folder = parent + u'/' + name;
        const auto lock = lockOf(folder);
        if (lock && isOwnFolder(folder))
            rmCocoa(folder);
    }
}

/// Folders that took the place of the user's own for one run, and outlived it.
void removeDeadUniqueFolders()
{
    const QStringList entries = QDir(applicationPlaces().temporaryFolder())
                                    .entryList({bundleIdentifier + "-??????"_L1}, QDir::Dirs);
    for (const QString &entry : entries) {
        const QString folder = inTemporaryFolder(entry);
        if (folder == userFolderPath() || !isOwnFolder(folder))
            continue;
        removeDeadFolders(folder);
        QDir().rmdir(folder);
    }
}

/// The lock comes first, so that no other process ever sees our folder without it.
bool claimFolder(const QString &parent, const QString &name)
{
    const QString folder = parent + u'/' + name;
    auto lock = lockOf(folder);
    if (!lock)
        return false;
    if (isOwnFolder(folder))
        rmCocoa(folder);
    if (!makePrivateFolder(folder))
        return false;
    current() = {folder, parent, std::move(lock)};
    return true;
}

bool claimFolderIn(const QString &parent, const QString &instance)
{
    if (parent.isNull())
        return false;
    removeDeadFolders(parent);
    if (instance == desktopInstance && claimFolder(parent, instance))
        return true;
    const quint32 number = QRandomGenerator::global()->generate();
    return claimFolder(parent, instance + filled(u"-%08x", number));
}

bool claimUniqueFolder(const QString &instance)
{
    const QString folder = uniqueUserFolder();
    if (claimFolderIn(folder, instance))
        return true;
    if (!folder.isNull())
        QDir().rmdir(folder);
    return false;
}

} // namespace

QString workFolder()
{
    return current().path.isNull() ? inTemporaryFolder(bundleName) : current().path;
}

void setWorkFolder(const QString &path)
{
    current() = {path, {}, nullptr};
}

bool setUpWorkFolder(const QString &instance)
{
    setWorkFolder({});
    removeDeadUniqueFolders();
    // The second attempt is for a run that ended just now and took the user's folder, empty
    // for a moment, with it.
    const bool isMade = claimFolderIn(userFolder(), instance) ||
                        claimFolderIn(userFolder(), instance) || claimUniqueFolder(instance);
    logLine(u"TMPFOLDER           : %@", workFolder());
    return isMade;
}

bool renewWorkFolder()
{
    const QString path = workFolder();
    if (isOwnFolder(path))
        return true;
    if (!current().userFolder.isNull())
        makePrivateFolder(current().userFolder);
    if (!makePrivateFolder(path))
        return false;
    logLine(u"TMPFOLDER           : made again: %@", path);
    // The lock has gone as well; without one the next run would take the folder for a dead one's.
    // The old one is released first, because that removes the file of its name.
    if (std::exchange(current().lock, nullptr))
        current().lock = lockOf(path);
    return true;
}

void removeWorkFolder()
{
    if (!current().lock)
        return;
    rmCocoa(current().path);
    const QString parent = current().userFolder;
    setWorkFolder({});
    // Succeeds only where no other run has its folder there.
    QDir().rmdir(parent);
}

QString toolPathSafeInWorkFolder(const QString &toolPath, const QString &folder)
{
    const bool isGiven = !folder.isEmpty() && QFileInfo(expandTilde(folder)).isDir();
    return toolPathSafe(toolPath, isGiven ? folder : workFolder());
}

} // namespace vignar
