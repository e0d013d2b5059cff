#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace vignar
{

/// The document extensions that the application declares, lower case, with the two
/// kinds of recording bundles.
const QStringList &declaredExtensions();

/// True when the extension (the text after the last dot of the last component) is a
/// declared one other than a bundle's, written all lower, all upper or capitalised.
bool hasAdmittedExtension(const QString &path);

/// True for names that nobody means when dropping the folder around them: hidden entries, trash
/// folders and the folders that file systems and network disks keep for themselves.
bool isLeftInItsFolder(const QString &name);

/// A folder or file that a search could not look into, as it is shown, and why.
struct UnreadEntry {
    QString path;
    QString reason;
};

struct FolderEntries {
    QStringList paths;
    QList<UnreadEntry> unread;
};

/// Every file and folder under a folder at any depth, full paths in natural order of
/// their names, without what is left in its folder; links to folders are listed, not entered.
/// Files that may be videos have paths that can be opened, whatever their names.
/// Gives up early where the interruption of its thread is requested.
FolderEntries entriesUnder(const QString &folder);

/// The path of the recording bundle that holds the source, or the source itself.
QString bundleOrSource(const QString &path);

} // namespace vignar
