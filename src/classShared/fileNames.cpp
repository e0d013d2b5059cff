#include "classShared/fileNames.h"

#include <QDir>
#include <QFile>

namespace vignar
{

namespace
{

/// Where the "." before the extension of a file name stands, or -1.
qsizetype extensionPoint(const QString &fileName)
{
    const qsizetype point = fileName.lastIndexOf(u'.');
    return point > 0 && point + 1 < fileName.size() ? point : -1;
}

QString withoutEndingSlashes(QString path)
{
    while (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    return path;
}

} // namespace

QString lastPathComponent(const QString &path)
{
    const QString trimmed = withoutEndingSlashes(path);
    return trimmed.mid(trimmed.lastIndexOf(u'/') + 1);
}

QString containingFolder(const QString &path)
{
    const QString trimmed = withoutEndingSlashes(path);
    const qsizetype slash = trimmed.lastIndexOf(u'/');
    if (slash < 0)
        return QStringLiteral("");
    return withoutEndingSlashes(trimmed.left(slash + 1));
}

QString joinedPath(const QString &folder, const QString &name)
{
    if (folder.isEmpty())
        return name;
    return folder.endsWith(u'/') ? folder + name : folder + u'/' + name;
}

QString pathExtension(const QString &path)
{
    const QString fileName = lastPathComponent(path);
    const qsizetype point = extensionPoint(fileName);
    return point < 0 ? QStringLiteral("") : fileName.mid(point + 1);
}

QString baseName(const QString &path)
{
    const QString fileName = lastPathComponent(path);
    return fileName.left(extensionPoint(fileName));
}

QString resolvedPath(const QString &path)
{
    std::error_code error;
    const auto resolved = std::filesystem::weakly_canonical(nativePath(path), error);
    return error ? QDir::cleanPath(path) : QFile::decodeName(resolved.c_str());
}

std::filesystem::path nativePath(const QString &path)
{
    return std::filesystem::path(QFile::encodeName(path).toStdString());
}

} // namespace vignar
