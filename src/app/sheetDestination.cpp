#include "app/sheetDestination.h"

#include "app/sourceFiles.h"
#include "classShared/paths.h"
#include "settings/applicationPlaces.h"

#include <QDir>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// Bytes of a file name that leave room, within the 255 that file systems allow, for a
/// number, an extension and the random letters of the file that is written first.
constexpr qsizetype nameLimit = 220;

QString cutToBytes(QString text, qsizetype limit)
{
    while (text.toUtf8().size() > limit)
        text.chop(text.back().isLowSurrogate() ? 2 : 1);
    return text;
}

QString harmless(QString text)
{
    for (QChar &character : text) {
        if (character == u'/' || character.category() == QChar::Other_Control)
            character = u'-';
    }
    return text;
}

QString sourceTitle(const QString &srcPath)
{
    const QString title = fichier_nom(bundleOrSource(srcPath));
    return title.isEmpty() ? u"sheet"_s : title;
}

} // namespace

QString destinationFolder(const QString &destinationField)
{
    const QString movies = expandTilde(u"~/Movies/"_s);
    QString path = expandTilde(destinationField.isEmpty() ? movies : destinationField);
    const bool isOurs = path.endsWith(bundleName) || path.endsWith(bundleName + u"/"_s) ||
                        path.contains(bundleName + u"/"_s);
    const bool isInMovies = (path + u'/').startsWith(movies);
    if (!isOurs && isInMovies)
        path = QDir(path).filePath(bundleName);
    return QDir::cleanPath(QDir::current().absoluteFilePath(path));
}

QString sheetSuffix(const QString &prefSuffix, bool isDiskPictureMade, const QString &defaultSuffix)
{
    QString suffix = prefSuffix;
    // Without a suffix the sheet and the disk picture would bear the same name.
    if (suffix.isEmpty() && isDiskPictureMade)
        suffix = defaultSuffix;
    suffix = harmless(suffix);
    return suffix.isEmpty() || suffix.startsWith(u'-') ? suffix : u"-"_s + suffix;
}

SheetTarget sheetTarget(const QString &folder, const QString &srcPath, const QString &suffix,
                        QSet<QString> &taken)
{
    const QString title = cutToBytes(sourceTitle(srcPath), nameLimit - suffix.toUtf8().size());
    SheetTarget target;
    for (int number = 1;; ++number) {
        const QString base =
            folder + u'/' + title + (number > 1 ? u"-"_s + QString::number(number) : QString());
        target = {base + suffix, base + u".jpg"_s};
        // Names that differ only in case are one name on many disks.
        const QSet<QString> names{target.sheetFile(SheetFormat::jpeg).toCaseFolded(),
                                  target.diskPicturePath.toCaseFolded()};
        if (!taken.intersects(names)) {
            taken.unite(names);
            return target;
        }
    }
}

} // namespace vignar
