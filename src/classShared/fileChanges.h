#pragma once

#include <QString>

namespace vignar
{

/// True for anything that bears the name, a link that leads nowhere included.
bool isThere(const QString &path);

/// The item itself by its real place: the folders of the path are resolved, the item
/// is not, so that a link stays the link. Null for an empty or relative path.
QString itemPath(const QString &path);

/// True when the path is the folder or lies under it; both cleaned.
bool isInside(const QString &path, const QString &folder);

/// Tells the handler of setFolderChangedHandler() that an item came or went.
void tellFolderChanged(const QString &item);

} // namespace vignar
