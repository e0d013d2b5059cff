#pragma once

#include <QString>

#include <filesystem>

namespace vignar
{

/// The path's last component; a "/" at the end does not count.
QString lastPathComponent(const QString &path);

/// Everything before the last component, without the "/" between them; "/" for what
/// lies directly under it, "" for a bare name.
QString containingFolder(const QString &path);

/// The folder and a name joined by exactly one "/"; the name alone for no folder.
QString joinedPath(const QString &folder, const QString &name);

/// What follows the last "." of the file name. A name that begins with its only "."
/// or ends with one has none.
QString pathExtension(const QString &path);

/// The file name without its extension and the "." before it.
QString baseName(const QString &path);

/// The path with "." and ".." gone and links resolved as far as it exists.
QString resolvedPath(const QString &path);

/// The path as the standard library takes it, in the file system's own encoding.
std::filesystem::path nativePath(const QString &path);

} // namespace vignar
