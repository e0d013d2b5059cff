#pragma once

#include <QDateTime>
#include <QString>

namespace vignar
{

/// The file's creation date: its birth time, or the last modification where that is
/// earlier (as of a copy) or the file system keeps no birth times. Invalid for a null
/// path or unreadable attributes.
QDateTime dateCreation(const QString &path);

/// "YYYY-MM-DD HH:MM:SS" (isLong) or "YYYY-MM-DD" of the path's creation date, or of
/// the fallback when the path is null; null when no date is had.
QString dateCreationStr(const QString &path, const QDateTime &fallback, bool isLong);

/// "2011-03-04 05:06:07 +0100" as "201103040506.07"; null for null.
QString dateCreationForTouch(const QString &text);

} // namespace vignar
