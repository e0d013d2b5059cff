#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace vignar
{

// Files whose names are not valid UTF-8. The toolkit can neither list nor open them, so that a
// symbolic link takes their place: "<folder>/<hash of the target's bytes>/<readable name>", the
// bytes that are no text shown as replacement characters (U+FFFD). The same file always gets the
// same link. Nobody is shown the path of a stand-in: see shownPath().

/// Sets the private folder that stand-ins are made in. To be called before the first thread that
/// asks for one is started.
void setStandInFolder(const QString &folder);

/// The path, made absolute and clean, as the toolkit can open it: itself or its stand-in. Null
/// for an empty one, and when a stand-in is wanted and cannot be made.
QString openablePath(const QByteArray &path);

/// True for paths that openablePath() made a link for, by this process or another one.
bool isStandIn(const QString &path);

/// The bytes of the path, and of what a stand-in leads to.
QByteArray systemPath(const QString &path);

/// The path as people are shown it: that of the file itself where it is a stand-in.
QString shownPath(const QString &path);

/// Where a link leads in the end, as the toolkit can open it. The path itself where it is no
/// link, leads nowhere or is a stand-in.
QString followedLink(const QString &path);

/// Removes the stand-ins that are not among the paths.
void sweepStandIns(const QStringList &used);

} // namespace vignar
