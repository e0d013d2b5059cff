#pragma once

#include <QString>
#include <QUrl>

namespace vignar
{

/// Everything here is pure: what the report says of a problem is decided before anybody
/// sees or sends it.

/// The text without the user's home folder, which names him: "~" stands in its place.
QString withoutHome(const QString &text, const QString &home);

/// The last lines of a log, at most so many and of so many characters together; a line
/// is never cut.
QString endOfLines(const QString &log, int lineLimit, int characterLimit);

/// The letter that the user is asked to complete: opening, the versions, the end of the
/// detailed log. home is left out of all of it.
QString problemReport(const QString &opening, const QString &versions, const QString &log,
                      const QString &home);

/// The address that hands a letter to the mail program (RFC 6068); recipient may be empty.
QUrl mailUrl(const QString &recipient, const QString &subject, const QString &body);

} // namespace vignar
