#include "classShared/files.h"

#include "classShared/fileNames.h"
#include "classShared/lineLog.h"
#include "classShared/paths.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

#include <filesystem>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

constexpr QDir::Filters everyEntry =
    QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;

} // namespace

qint64 freeDiskSpaceMo(const QString &path)
{
    if (path.isEmpty())
        return -1;
    logDebug(u"free disk space file: %@", path);
    std::error_code error;
    const auto space = std::filesystem::space(nativePath(expandTilde(path)), error);
    if (error) {
        logLine(u"error               :-( %@", QString::fromStdString(error.message()));
        return -1;
    }
    const auto megabytes = static_cast<qint64>(space.available >> 20);
    logDebug(u"free disk space     : %ld Mo", megabytes);
    return megabytes;
}

float folderSizeMo(const QString &folder)
{
    if (folder.isEmpty())
        return 0;
    qint64 bytes = 0;
    QDirIterator items(expandTilde(folder), everyEntry, QDirIterator::Subdirectories);
    while (items.hasNext()) {
        struct stat item;
        if (::lstat(QFile::encodeName(items.next()).constData(), &item) == 0)
            bytes += item.st_size;
    }
    const auto megabytes = static_cast<float>(static_cast<double>(bytes) / 1048576.0);
    logDebug(u"current folder size : %f Mo", megabytes);
    return megabytes;
}

std::optional<QStringList> lsCocoa(const QString &folder)
{
    logLine(u"lsCocoa             - begin : %@", folder);
    QStringList paths;
    if (!folder.isEmpty()) {
        QDirIterator items(QDir::cleanPath(expandTilde(folder)), everyEntry);
        while (items.hasNext())
            paths += items.next();
    }
    logLine(u"lsCocoa             - end : %lu items : %@", paths.size(), paths);
    return paths.isEmpty() ? std::nullopt : std::optional(paths);
}

std::optional<QStringList> lsGrepCocoa(const QString &folder, const QString &extension)
{
    QStringList matching;
    for (const QString &path : lsCocoa(folder).value_or(QStringList())) {
        const QString found = pathExtension(path);
        logLine(u"lsGrepCocoa extStr  :'%@' ? ext=%@ file=%@", extension, found, path);
        if (found.toUpper() == extension.toUpper())
            matching += path;
    }
    return matching.isEmpty() ? std::nullopt : std::optional(matching);
}

QStringList findCocoa(const QString &folder, const QString &text, bool isCaseInsensitive)
{
    logLine(u"findCocoa           - folder: %@ grep:%@ isCaseInsensitive:%", folder, text);
    constexpr qsizetype enoughEntries = 200;
    QStringList paths = lsCocoa(folder).value_or(QStringList());
    for (qsizetype i = 0; i < paths.size() && paths.size() < enoughEntries; ++i) {
        // A link back to a folder above would fill the list with the same entries.
        const QFileInfo info(paths.at(i));
        if (info.isDir() && !info.isSymLink())
            paths += lsCocoa(paths.at(i)).value_or(QStringList());
    }
    logLine(u"findCocoa           - end : %lu items", paths.size());

    const auto sensitivity = isCaseInsensitive ? Qt::CaseInsensitive : Qt::CaseSensitive;
    paths.removeIf(
        [&](const QString &path) { return !lastPathComponent(path).contains(text, sensitivity); });
    logLine(u"findCocoa           - end : %lu items : %@", paths.size(), paths);
    return paths;
}

} // namespace vignar
