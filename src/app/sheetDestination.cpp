#include "app/sheetDestination.h"

#include "app/sourceFiles.h"
#include "classShared/dates.h"
#include "classShared/durations.h"
#include "classShared/paths.h"
#include "classShared/standIns.h"
#include "settings/applicationPlaces.h"
#include "settings/preferenceRanges.h"
#include "sheet/plannedSource.h"

#include <QDir>
#include <QRegularExpression>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// Bytes of a file name that leave room, within the 255 that file systems allow, for a
/// number, an extension and what is added for the files beside the sheet.
constexpr qsizetype nameLimit = 220;
/// A suffix with its hyphen leaves the title more than half of the name.
constexpr qsizetype suffixLimit = longestSuffix + 1;
static_assert(2 * suffixLimit < nameLimit);

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
    const QString title = fichier_nom(bundleOrSource(shownPath(srcPath)));
    return title.isEmpty() ? u"sheet"_s : title;
}

QString fieldText(const QString &field, const SourceDico &source, const QString &suffix)
{
    const QString path = readStr(source, Keys::srcPathStr);
    const auto number = [](const std::optional<int> &value) {
        return value ? QString::number(*value) : QString();
    };
    if (field == "name"_L1)
        return sourceTitle(path);
    if (field == "suffix"_L1)
        return suffix;
    if (field == "date"_L1)
        return dateCreationStr(path, {}, true).section(u' ', 0, 0);
    if (field == "width"_L1)
        return number(read(source, Keys::v_width, 0));
    if (field == "height"_L1)
        return number(read(source, Keys::v_height, 0));
    if (field == "duration"_L1)
        return duree2HmsStr(plannedSeconds(source)).replace(u'\'', u'm').replace(u'"', u's');
    if (field == "codec"_L1)
        return read(source, Keys::v_codec, 0).value_or(QString());
    if (field == "folder"_L1)
        return QFileInfo(bundleOrSource(shownPath(path))).dir().dirName();
    return u'{' + field + u'}';
}

/// In one go: what a field says is no template.
QString withFields(const QString &nameTemplate, const SourceDico &source, const QString &suffix)
{
    static const QRegularExpression field(u"\\{(\\w+)\\}"_s);
    QString name;
    qsizetype at = 0;
    for (auto found = field.globalMatch(nameTemplate); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        name += nameTemplate.mid(at, match.capturedStart() - at) +
                fieldText(match.captured(1), source, suffix);
        at = match.capturedEnd();
    }
    return name + nameTemplate.mid(at);
}

} // namespace

QString nameFromTemplate(const QString &nameTemplate, const SourceDico &source,
                         const QString &suffix)
{
    // A backslash separates folders where a share is read by other systems.
    const QString text = harmless(withFields(nameTemplate, source, suffix)).replace(u'\\', u'-');
    const QString name = cutToBytes(text.trimmed(), nameLimit);
    return name.isEmpty() || name == "."_L1 || name == ".."_L1 ? QString() : name;
}

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
    if (!suffix.isEmpty() && !suffix.startsWith(u'-'))
        suffix.prepend(u'-');
    return cutToBytes(suffix, suffixLimit);
}

SheetTarget sheetTarget(const QString &folder, const QString &srcPath, const SheetNaming &naming,
                        QSet<QString> &taken)
{
    const QString suffix = cutToBytes(naming.suffix, suffixLimit);
    const QString title = cutToBytes(sourceTitle(srcPath), nameLimit - suffix.toUtf8().size());
    const bool isAlike = naming.sheetName.toCaseFolded() == title.toCaseFolded();
    const bool isOwnName = !naming.sheetName.isNull() && !isAlike;
    SheetTarget target;
    for (int count = naming.firstNumber;; ++count) {
        const QString number = count > 1 ? u"-"_s + QString::number(count) : QString();
        const QString base = folder + u'/' + title + number;
        target = {isOwnName ? folder + u'/' + naming.sheetName + number : base + suffix,
                  base + u".jpg"_s, count};
        // Names that differ only in case are one name on many disks.
        QSet<QString> names{target.sheetFile(SheetFormat::jpeg).toCaseFolded(),
                            target.diskPicturePath.toCaseFolded()};
        if (naming.isPreviewMade)
            names.insert(target.spriteFile().toCaseFolded());
        if (!taken.intersects(names)) {
            taken.unite(names);
            return target;
        }
    }
}

} // namespace vignar
