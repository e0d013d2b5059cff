#include "classShared/files.h"

#include "classShared/fileChanges.h"
#include "classShared/fileNames.h"
#include "classShared/lineLog.h"
#include "classShared/paths.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace fs = std::filesystem;

namespace vignar
{

namespace
{

/// The log formats in which mv() and copy() differ.
struct Words {
    QStringView missing;
    QStringView deletedFirst;
    QStringView notDeletedFirst;
    QStringView alreadyExists;
};

constexpr Words moveWords{u"mv File current     :-( does not exist: '%@'",
                          u"mv New deleted first:-) '%@'", u"mv New deleted first:-( '%@'",
                          u"mv New already exist:-( '%@'"};
constexpr Words copyWords{u"File current        :-( does not exist: %@",
                          u"New deleted first   :-) %@", u"New deleted first   :-( %@",
                          u"New already exists  :-( %@"};

struct Transfer {
    QString from;
    QString to;
    const Words &words;
};

/// True when removing or filling one of the two would touch the other: they are the
/// same item (by another spelling or link), or one lies inside the other.
bool isOverlapping(const QString &from, const QString &to)
{
    std::error_code error;
    if (fs::equivalent(nativePath(from), nativePath(to), error))
        return true;
    const QString fromItem = itemPath(from);
    const QString toItem = itemPath(to);
    return isInside(fromItem, toItem) || isInside(toItem, fromItem) ||
           isInside(resolvedPath(from), toItem);
}

/// What mv() and copy() check alike; nothing for a transfer that is refused.
std::optional<Transfer> checkedTransfer(const QString &source, const QString &destination,
                                        const QString &overwrite, const Words &words)
{
    if (source.isEmpty() || destination.isEmpty())
        return std::nullopt;
    const Transfer transfer{QDir::cleanPath(expandTilde(source)),
                            QDir::cleanPath(expandTilde(destination)), words};
    if (!isThere(transfer.from)) {
        logLine(words.missing, transfer.from);
        return std::nullopt;
    }
    if (isThere(transfer.to) && overwrite != "y"_L1) {
        logLine(words.alreadyExists, transfer.to);
        return std::nullopt;
    }
    if (isOverlapping(transfer.from, transfer.to)) {
        logLine(u"source, destination :-( overlap: '%@' '%@'", transfer.from, transfer.to);
        return std::nullopt;
    }
    return transfer;
}

std::error_code removeOld(const Transfer &transfer)
{
    if (!isThere(transfer.to))
        return {};
    const bool isRemoved = rmCocoa(transfer.to);
    logLine(isRemoved ? transfer.words.deletedFirst : transfer.words.notDeletedFirst, transfer.to);
    return isRemoved ? std::error_code() : std::make_error_code(std::errc::file_exists);
}

/// Renames, but never over an item that has come up in the meantime.
std::error_code renameItem(const QString &from, const QString &to)
{
#ifdef RENAME_NOREPLACE
    if (::renameat2(AT_FDCWD, QFile::encodeName(from).constData(), AT_FDCWD,
                    QFile::encodeName(to).constData(), RENAME_NOREPLACE) == 0)
        return {};
    // Some file systems do not know the flag, and only that is a reason to go on.
    if (errno != EINVAL && errno != ENOSYS)
        return {errno, std::generic_category()};
#endif
    if (isThere(to))
        return std::make_error_code(std::errc::file_exists);
    std::error_code error;
    fs::rename(nativePath(from), nativePath(to), error);
    return error;
}

/// A copy is to bear the dates of its original, as far as the volume can hold them.
void keepTimes(const fs::path &from, const fs::path &to)
{
    std::error_code ignored;
    const auto keepTime = [&ignored](const fs::path &original, const fs::path &copied) {
        if (!fs::is_symlink(original, ignored))
            fs::last_write_time(copied, fs::last_write_time(original, ignored), ignored);
    };
    if (fs::is_directory(fs::symlink_status(from, ignored))) {
        for (fs::recursive_directory_iterator item(from, ignored), end; item != end;
             item.increment(ignored))
            keepTime(item->path(), to / item->path().lexically_relative(from));
    }
    keepTime(from, to);
}

/// The copy is made beside its final name and renamed when it is complete: a full disk
/// or a crash leaves neither half a copy nor a destination removed for nothing.
std::error_code copyItem(const Transfer &transfer)
{
    QTemporaryDir stage(joinedPath(containingFolder(transfer.to), u".copy-XXXXXX"_s));
    if (!stage.isValid())
        return std::make_error_code(std::errc::permission_denied);
    const QString staged = stage.filePath(lastPathComponent(transfer.to));
    std::error_code error;
    fs::copy(nativePath(transfer.from), nativePath(staged),
             fs::copy_options::recursive | fs::copy_options::copy_symlinks, error);
    if (error)
        return error;
    keepTimes(nativePath(transfer.from), nativePath(staged));
    error = removeOld(transfer);
    return error ? error : renameItem(staged, transfer.to);
}

bool isOnOneVolume(const QString &item, const QString &folder)
{
    struct stat first;
    struct stat second;
    return ::lstat(QFile::encodeName(item).constData(), &first) == 0 &&
           ::stat(QFile::encodeName(folder).constData(), &second) == 0 &&
           first.st_dev == second.st_dev;
}

std::error_code moveItem(const Transfer &transfer)
{
    std::error_code error = std::make_error_code(std::errc::cross_device_link);
    if (isOnOneVolume(transfer.from, containingFolder(transfer.to))) {
        error = removeOld(transfer);
        if (!error)
            error = renameItem(transfer.from, transfer.to);
    }
    if (error != std::errc::cross_device_link)
        return error;
    error = copyItem(transfer);
    if (!error && !rmCocoa(transfer.from))
        error = std::make_error_code(std::errc::operation_not_permitted);
    return error;
}

} // namespace

bool mv(const QString &source, const QString &destination, const QString &overwrite)
{
    logLine(u"mv File current->new: '%@' -> '%@'", source, destination);
    const auto transfer = checkedTransfer(source, destination, overwrite, moveWords);
    if (!transfer)
        return false;
    if (const std::error_code error = moveItem(*transfer)) {
        logLine(u"mv File moved       :-( '%@', err…", transfer->to);
        logLine(u"%@", QString::fromStdString(error.message()));
        return false;
    }
    tellFolderChanged(transfer->from);
    tellFolderChanged(transfer->to);
    logLine(u"mv File moved       :-) '%@'", transfer->to);
    return isThere(transfer->to);
}

bool copy(const QString &source, const QString &destination, const QString &overwrite)
{
    logLine(u"File current        : %@", source);
    logLine(u"File new            : %@", destination);
    const auto transfer = checkedTransfer(source, destination, overwrite, copyWords);
    if (!transfer)
        return false;
    const std::error_code error = copyItem(*transfer);
    logLine(u"File copied         :-%@ %@", error ? u"("_s : u")"_s, transfer->to);
    if (error) {
        logLine(u"%@", QString::fromStdString(error.message()));
        return false;
    }
    tellFolderChanged(transfer->to);
    return true;
}

} // namespace vignar
