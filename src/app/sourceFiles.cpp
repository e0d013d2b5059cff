#include "app/sourceFiles.h"

#include <QCollator>
#include <QDirIterator>
#include <QSet>
#include <QThread>

#include <algorithm>
#include <vector>

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

/// The declared extensions but the bundles', each in the three spellings that are admitted.
QSet<QString> admittedExtensions()
{
    QSet<QString> admitted;
    for (const QString &extension : declaredExtensions()) {
        if (bundleExtensions().contains(extension, Qt::CaseInsensitive))
            continue;
        const QString lower = extension.toLower();
        admitted << lower << lower.toUpper() << lower.left(1).toUpper() + lower.mid(1);
    }
    return admitted;
}

QStringList inNaturalOrder(const QStringList &paths)
{
    QCollator collator(QLocale(QLocale::English));
    collator.setNumericMode(true);
    // A comparison of texts costs far more than one of keys, and each takes part in many.
    std::vector<std::pair<QCollatorSortKey, qsizetype>> keys;
    keys.reserve(size_t(paths.size()));
    for (qsizetype index = 0; index < paths.size(); ++index)
        keys.emplace_back(collator.sortKey(paths[index]), index);
    std::stable_sort(keys.begin(), keys.end(), [](const auto &one, const auto &other) {
        return one.first.compare(other.first) < 0;
    });
    QStringList sorted;
    sorted.reserve(paths.size());
    for (const auto &[key, index] : keys)
        sorted.append(paths[index]);
    return sorted;
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
    static const QSet<QString> admitted = admittedExtensions();
    return admitted.contains(extensionOf(path));
}

bool isLeftInItsFolder(const QString &name)
{
    static const QStringList folders{u"$RECYCLE.BIN"_s, u"lost+found"_s,
                                     u"System Volume Information"_s, u"@eaDir"_s};
    return name.startsWith(u'.') || folders.contains(name, Qt::CaseInsensitive);
}

QStringList entriesUnder(const QString &folder)
{
    QStringList entries;
    QStringList folders{folder};
    const QThread *thread = QThread::currentThread();
    while (!folders.isEmpty()) {
        QDirIterator walk(folders.takeLast(), QDir::AllEntries | QDir::NoDotAndDotDot);
        while (walk.hasNext() && !thread->isInterruptionRequested()) {
            const QString path = walk.next();
            if (isLeftInItsFolder(walk.fileName()))
                continue;
            entries.append(path);
            const QFileInfo info = walk.fileInfo();
            if (!info.isSymLink() && info.isDir())
                folders.append(path);
        }
    }
    return inNaturalOrder(entries);
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
