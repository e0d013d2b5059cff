#include "app/sourceFiles.h"

#include "classShared/fileNames.h"
#include "classShared/format.h"
#include "classShared/standIns.h"
#include "settings/stringTables.h"

#include <QCollator>
#include <QFile>
#include <QSet>
#include <QThread>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

namespace vignar
{

namespace fs = std::filesystem;

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

/// A path as it can be opened, and as it is shown.
struct Entry {
    QString path;
    QString shown;
};

QStringList inNaturalOrder(const QList<Entry> &entries)
{
    QCollator collator(QLocale(QLocale::English));
    collator.setNumericMode(true);
    // A comparison of texts costs far more than one of keys, and each takes part in many.
    std::vector<std::pair<QCollatorSortKey, qsizetype>> keys;
    keys.reserve(size_t(entries.size()));
    for (qsizetype index = 0; index < entries.size(); ++index)
        keys.emplace_back(collator.sortKey(entries[index].shown), index);
    std::stable_sort(keys.begin(), keys.end(), [](const auto &one, const auto &other) {
        return one.first.compare(other.first) < 0;
    });
    QStringList sorted;
    sorted.reserve(entries.size());
    for (const auto &[key, index] : keys)
        sorted.append(entries[index].path);
    return sorted;
}

QString unreadReason(const std::error_code &error)
{
    return filled(localised(u"V_reason_unread"_s), QString::fromStdString(error.message()));
}

/// Looks into a folder and those under it. The toolkit's own walk leaves out in silence what it
/// cannot read and names that are not UTF-8.
class FolderWalk
{
public:
    FolderEntries through(const QString &folder)
    {
        m_folders.emplace_back(systemPath(folder).toStdString());
        while (!m_folders.empty() && !isGivenUp()) {
            const fs::path next = std::move(m_folders.back());
            m_folders.pop_back();
            read(next);
        }
        return {inNaturalOrder(m_entries), std::move(m_unread)};
    }

private:
    static bool isGivenUp() { return QThread::currentThread()->isInterruptionRequested(); }
    static QByteArray bytesOf(const fs::path &path)
    {
        return QByteArray::fromStdString(path.native());
    }

    /// Other than a link that leads nowhere.
    static bool isUnreadable(const std::error_code &error)
    {
        return error == std::errc::permission_denied || error == std::errc::io_error;
    }

    void read(const fs::path &folder)
    {
        std::error_code error;
        fs::directory_iterator entry(folder, error);
        for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
            if (isGivenUp())
                return;
            take(*entry);
        }
        if (error)
            m_unread.append({QFile::decodeName(bytesOf(folder)), unreadReason(error)});
    }

    void take(const fs::directory_entry &entry)
    {
        const QByteArray bytes = bytesOf(entry.path());
        const QString shown = QFile::decodeName(bytes);
        if (isLeftInItsFolder(lastPathComponent(shown)))
            return;
        std::error_code error;
        const bool isFolder = entry.is_directory(error);
        if (isFolder && !entry.is_symlink(error))
            m_folders.push_back(entry.path());
        const bool isVideo = hasAdmittedExtension(shown) && entry.is_regular_file(error);
        const QString path = isVideo ? openablePath(bytes) : shown;
        if (path.isNull())
            m_unread.append({shown, localised(u"V_reason_name"_s)});
        else if (isFolder || entry.is_regular_file(error))
            m_entries.append({path, shown});
        else if (hasAdmittedExtension(shown) && isUnreadable(error))
            m_unread.append({shown, unreadReason(error)});
    }

    std::vector<fs::path> m_folders;
    QList<Entry> m_entries;
    QList<UnreadEntry> m_unread;
};

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

FolderEntries entriesUnder(const QString &folder)
{
    return FolderWalk().through(folder);
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
