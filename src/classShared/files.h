#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace vignar
{

/// Paths are tilde-expanded first; nothing raises, every refusal is logged.
///
/// Removes a file, link or whole folder; a link goes itself, never what it leads to.
/// Refuses the home folder and every folder above it, what lies directly under "/",
/// "/Users", "/Volumes", "/home", "/media", "/run/media" or "/mnt", the root of a
/// mounted volume, wildcards, and relative and empty paths, however the path spells
/// them. What cannot be removed goes to the trash. True when the path is gone
/// afterwards or never existed.
bool rmCocoa(const QString &path);

/// Creates the folder with its missing parents; true when it exists afterwards.
bool mkdir(const QString &path);

/// Sets the permissions 0777 for the code 777 and 0755 for any other; recursive is
/// only logged. False only for a null path.
bool chmodPath(const QString &path, int modeCode, const QString &recursive);

/// Moves a file, link or whole folder, also to another volume; an existing destination
/// is replaced only when overwrite is "y". Refused where the source is the destination
/// under another name or one lies inside the other. A failure leaves
/// the source, or else a complete copy of it.
bool mv(const QString &source, const QString &destination, const QString &overwrite);

/// Copies a file or a whole folder, links as links, under the rules of mv(). The
/// destination is replaced only once the copy is complete.
bool copy(const QString &source, const QString &destination, const QString &overwrite);

/// Makes a symbolic link at linkPath that points at source.
bool ln_sCocoa(const QString &source, const QString &linkPath);

/// A link in the folder, whose name holds only characters that need no quoting and
/// which leads to path; path itself when it is that link already or no link can be
/// made. Without a folder the link is made in the temporary folder; only a link is
/// ever replaced by it.
QString toolPathSafe(const QString &path, const QString &folder);

/// Free megabytes of the volume that holds the path, or -1 for a path that is missing.
qint64 freeDiskSpaceMo(const QString &path);

/// Megabytes of everything under the folder; links are counted, not followed.
float folderSizeMo(const QString &folder);

/// Full paths of the folder's entries, in the order of the file system; nothing for
/// an empty or unreadable folder.
std::optional<QStringList> lsCocoa(const QString &folder);

/// The entries with the extension, compared without case; nothing when none match.
std::optional<QStringList> lsGrepCocoa(const QString &folder, const QString &extension);

/// Paths under the folder whose last component holds the text; breadth first, and
/// only near the top of a large tree (folders are opened while fewer than 200
/// entries are known).
QStringList findCocoa(const QString &folder, const QString &text, bool isCaseInsensitive);

/// What a change under a folder calls, so that a file browser can refresh. Without
/// a handler nothing is told.
void setFolderChangedHandler(std::function<void(const QString &folder)> handler);

} // namespace vignar
