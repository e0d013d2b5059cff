#include "classShared/dates.h"

#include "classShared/lineLog.h"
#include "classShared/paths.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

constexpr int dayLength = 10;
constexpr int secondLength = 19;

/// "2011-03-04 05:06:07 +0100", in local time.
QString standardText(const QDateTime &date)
{
    const QDateTime local = date.toLocalTime();
    const int minutes = local.offsetFromUtc() / 60;
    return filled(u"%@ %@%02d%02d", local.toString(u"yyyy-MM-dd HH:mm:ss"_s),
                  minutes < 0 ? u"-"_s : u"+"_s, qAbs(minutes) / 60, qAbs(minutes) % 60);
}

/// Archives that are to be reproducible, some cameras and network disks write 0 or a little
/// more for a time that they do not know.
bool isNoDate(const QDateTime &date)
{
    return !date.isValid() || date < QDateTime(QDate(1970, 1, 8), QTime(0, 0), Qt::UTC);
}

} // namespace

QDateTime dateCreation(const QString &path)
{
    if (path.isNull())
        return {};
    const QString standardized = QDir::cleanPath(expandTilde(path));
    logDebug(u"path : %@", standardized);

    // A copy is born when it is copied, but keeps the date of its original as the last
    // modification: the earlier of the two is the day the film was made.
    const QFileInfo info(standardized);
    const QDateTime born = info.birthTime();
    const QDateTime modified = info.lastModified();
    const bool isBornEarlier = born.isValid() && (isNoDate(modified) || born < modified);
    const QDateTime date = isBornEarlier ? born : modified;
    if (date.isValid())
        logDebug(u"dico (creation date) : %@", standardText(date));
    return date;
}

QString dateCreationStr(const QString &path, const QDateTime &fallback, bool isLong)
{
    const QDateTime date = path.isNull() ? fallback : dateCreation(path);
    if (!date.isValid())
        return {};
    QString text = standardText(date);
    logDebug(u"dateCreation        : %@", text);
    text.truncate(isLong ? secondLength : dayLength);
    logDebug(u"dateCreation        : %@", text);
    return text;
}

QString dateCreationForTouch(const QString &text)
{
    if (text.isNull())
        return {};
    constexpr int compactDayLength = 8;
    constexpr int compactSecondLength = 14;
    QString compact = findAndReplace(text.left(secondLength), u"-"_s, u""_s, false);
    logDebug(u"myDateCreationStr = %@", compact);
    if (compact.size() > compactDayLength) {
        for (const QString &separator : {u":"_s, u" "_s}) {
            compact = findAndReplace(compact, separator, u""_s, false);
            logDebug(u"myDateCreationStr = %@", compact);
        }
    }
    if (compact.size() == compactSecondLength)
        compact.insert(compactSecondLength - 2, u'.');
    logLine(u"dateCreationForTouch: %@", compact);
    return compact;
}

} // namespace vignar
