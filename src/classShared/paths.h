#pragma once

#include <QString>
#include <QStringList>

namespace vignar
{

/// A leading "~" or "~user" replaced by the home folder.
QString expandTilde(const QString &path);

/// The longest beginning of a text that takes at most so many bytes in UTF-8, no character
/// cut in two.
QString cutToBytes(const QString &text, qsizetype bytes);

/// The text with every occurrence replaced, compared literally; isRecursive repeats
/// until none is left. Null when any argument is null.
QString findAndReplace(const QString &text, const QString &search, const QString &replacement,
                       bool isRecursive);

/// The text without blanks at the asked ends; null when nothing is left.
QString trimLeadingTrailing(const QString &text, bool leading, bool trailing);

/// The path with its file name cleaned and cut to n characters, extension aside.
QString trimPathStr(const QString &path, int n);

/// The path with "_MASTER" added to its file name, kept under 28 characters.
QString masterPath(const QString &path);

/// File name without folder and extension, links resolved; null for null.
QString fichier_nom(const QString &path);

/// The folder that holds the file, links resolved; "" for null.
QString fichier_dirname(const QString &path);

/// A title to show for a video: file name without the suffixes, "_" as blanks.
QString pathes2Titles(const QString &path, const QStringList &suffixes = {});

/// True when the path can be opened for reading, or is a symbolic link.
bool pathExists(const QString &path);

/// The component after "Users" in the home path (on Linux: after "home", or "root");
/// null when there is none.
QString homeUserName();

} // namespace vignar
