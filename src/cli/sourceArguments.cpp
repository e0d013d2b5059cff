#include "cli/sourceArguments.h"

#include "classShared/result.h"
#include "classShared/standIns.h"
#include "cli/argumentBytes.h"
#include "settings/stringTables.h"

#include <QFile>
#include <QFileInfo>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// The folder's videos, or why it has none; what lies under it and cannot be read is added.
Result<QStringList> videosUnder(const QString &folder, QList<UnreadEntry> &unread)
{
    const FolderEntries entries = entriesUnder(folder);
    QStringList videos;
    for (const QString &entry : entries.paths) {
        if (hasAdmittedExtension(entry) && QFileInfo(entry).isFile())
            videos.append(entry);
    }
    const QString shown = shownPath(folder);
    for (const UnreadEntry &each : entries.unread) {
        if (videos.isEmpty() && each.path == shown)
            return Failure{each.reason};
    }
    unread += entries.unread;
    if (videos.isEmpty())
        return Failure{localised(u"V_reason_empty"_s)};
    return videos;
}

/// The files that an argument stands for, or why it stands for none.
Result<QStringList> filesOf(const QString &path, QList<UnreadEntry> &unread)
{
    const QFileInfo info(path);
    if (!info.exists())
        return Failure{localised(u"V_reason_missing"_s)};
    if (info.isDir())
        return videosUnder(path, unread);
    if (!info.isFile() || !hasAdmittedExtension(path))
        return Failure{localised(u"V_reason_notVideo"_s)};
    return QStringList{path};
}

} // namespace

SourceArguments expandSources(const QStringList &arguments)
{
    SourceArguments result;
    for (const QString &argument : arguments) {
        const QByteArray bytes = argumentBytes(argument);
        const QString path = followedLink(openablePath(bytes));
        if (path.isNull()) {
            const QString reason = bytes.isEmpty() ? u"V_reason_missing"_s : u"V_reason_name"_s;
            result.refused.append({QFile::decodeName(bytes), localised(reason)});
            continue;
        }
        const Result<QStringList> files = filesOf(path, result.unread);
        if (files)
            result.files += *files;
        else
            result.refused.append({shownPath(path), files.reason()});
    }
    // The intake follows a link that it is given first; whoever counts the sources has to
    // know them by the same names.
    if (!result.files.isEmpty())
        result.files.first() = followedLink(result.files.first());
    result.files.removeDuplicates();
    return result;
}

} // namespace vignar
