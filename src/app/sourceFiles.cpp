#include "app/sourceFiles.h"

#include <QCollator>
#include <QDirIterator>

#include <algorithm>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

const QStringList &bundleExtensions()
{
    static const QStringList extensions{u"eyetv"_s, u"iMovieProject"_s};
    return extensions;
}

QString extensionOf(const QString &path)
{
    const QString lastComponent = path.mid(path.lastIndexOf(u'/') + 1);
    const qsizetype dot = lastComponent.lastIndexOf(u'.');
    return dot < 0 ? QString() : lastComponent.mid(dot + 1);
}

} // namespace

const QStringList &declaredExtensions()
{
    static const QStringList extensions =
        u"mp4 m4v mov qt mkv webm avi divx mpg mpeg mpe m1v m2v mpv vob vro mod tod ts m2t m2ts "
        "mts flv f4v wmv asf 3gp 3g2 ogv ogm rm rmvb dv dif mxf evo wtv dvr-ms nut y4m gxf amv"_s
            .split(u' ') +
        bundleExtensions();
    return extensions;
}

bool hasAdmittedExtension(const QString &path)
{
    const QString extension = extensionOf(path);
    const QString lower = extension.toLower();
    if (extension.isEmpty() || !declaredExtensions().contains(lower) ||
        bundleExtensions().contains(lower, Qt::CaseInsensitive))
        return false;
    const QString capitalised = lower.left(1).toUpper() + lower.mid(1);
    return extension == lower || extension == lower.toUpper() || extension == capitalised;
}

QStringList entriesUnder(const QString &folder)
{
    QStringList entries;
    QDirIterator walk(folder, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (walk.hasNext())
        entries.append(walk.next());
    QCollator collator(QLocale(QLocale::English));
    collator.setNumericMode(true);
    std::stable_sort(entries.begin(), entries.end(), collator);
    return entries;
}

QString bundleOrSource(const QString &path)
{
    for (const QString &extension : bundleExtensions()) {
        const QString mark = u"."_s + extension + u"/"_s;
        const qsizetype end = path.indexOf(mark, 0, Qt::CaseInsensitive);
        if (end >= 0)
            return path.left(end + mark.size() - 1);
    }
    return path;
}

} // namespace vignar
