#include "cli/sourceArguments.h"

#include "app/sourceFiles.h"
#include "settings/stringTables.h"

#include <QDir>
#include <QFileInfo>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

QStringList videosUnder(const QString &folder)
{
    QStringList videos;
    for (const QString &entry : entriesUnder(folder)) {
        if (hasAdmittedExtension(entry) && QFileInfo(entry).isFile())
            videos.append(entry);
    }
    return videos;
}

} // namespace

SourceArguments expandSources(const QStringList &arguments)
{
    SourceArguments result;
    for (const QString &argument : arguments) {
        QFileInfo info(argument);
        QString path = QDir::cleanPath(info.absoluteFilePath());
        if (!info.exists()) {
            result.refused.append({path, localised(u"V_reason_missing"_s)});
            continue;
        }
        if (info.isSymLink())
            info.setFile(path = info.canonicalFilePath());
        const QStringList files = info.isDir() ? videosUnder(path) : QStringList{path};
        if (files.isEmpty())
            result.refused.append({path, localised(u"V_reason_empty"_s)});
        else if (!info.isDir() && !(info.isFile() && hasAdmittedExtension(path)))
            result.refused.append({path, localised(u"V_reason_notVideo"_s)});
        else
            result.files += files;
    }
    // The intake follows a link that it is given first; whoever counts the sources has to
    // know them by the same names.
    if (!result.files.isEmpty() && QFileInfo(result.files.first()).isSymLink())
        result.files.first() = QFileInfo(result.files.first()).canonicalFilePath();
    result.files.removeDuplicates();
    return result;
}

} // namespace vignar
