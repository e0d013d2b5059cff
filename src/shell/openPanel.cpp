#include "shell/openPanel.h"

#include "app/sourceFiles.h"
#include "classShared/paths.h"
#include "classShared/standIns.h"
#include "settings/stringTables.h"
#include "shell/dropArea.h"

#include <QFileDialog>
#include <QStandardPaths>
#include <QUrl>

namespace vignar
{

using namespace Qt::StringLiterals;

QString existingFolder(const QString &path)
{
    QString folder = expandTilde(path);
    while (!folder.isEmpty() && !QFileInfo(folder).isDir() && QFileInfo(folder).path() != folder)
        folder = QFileInfo(folder).path();
    return folder;
}

namespace
{

/// Where the user chose sources last in this run.
QString &lastFolder()
{
    static QString folder = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation);
    return folder;
}

} // namespace

QString sourceFilter()
{
    QStringList patterns;
    for (const QString &extension : declaredExtensions()) {
        const QString capitalised = extension.left(1).toUpper() + extension.mid(1);
        for (const QString &spelling : {extension, extension.toUpper(), capitalised}) {
            if (hasAdmittedExtension(u"a."_s + spelling))
                patterns.append(u"*."_s + spelling);
        }
    }
    return localised(u"V_open_filter"_s) + u" ("_s + patterns.join(u' ') + u')';
}

QStringList chooseSources(QWidget &window)
{
    const QList<QUrl> urls = QFileDialog::getOpenFileUrls(
        &window, localised(u"menuOpen"_s), QUrl::fromLocalFile(existingFolder(lastFolder())),
        sourceFilter());
    const QStringList paths = localPaths(urls);
    if (!paths.isEmpty())
        lastFolder() = QFileInfo(shownPath(paths.first())).path();
    return paths;
}

QStringList chooseSourceFolder(QWidget &window)
{
    const QUrl url = QFileDialog::getExistingDirectoryUrl(
        &window, localised(u"menuOpen"_s), QUrl::fromLocalFile(existingFolder(lastFolder())));
    const QStringList paths = localPaths({url});
    if (!paths.isEmpty())
        lastFolder() = shownPath(paths.first());
    return paths;
}

} // namespace vignar
