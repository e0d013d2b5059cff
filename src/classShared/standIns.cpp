#include "classShared/standIns.h"

#include "classShared/fileNames.h"
#include "classShared/lineLog.h"
#include "classShared/paths.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <optional>

#include <sys/stat.h>
#include <unistd.h>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// Bytes that a file name may have.
constexpr qsizetype nameLimit = 255;
constexpr qsizetype hashDigits = 16;

QString &standInFolder()
{
    static QString folder;
    return folder;
}

std::optional<QString> decoded(const QByteArray &path)
{
    const QString text = QFile::decodeName(path);
    return QFile::encodeName(text) == path ? std::optional(text) : std::nullopt;
}

QByteArray absolutePath(const QByteArray &path)
{
    QByteArray whole = path;
    std::error_code error;
    if (!path.startsWith('/'))
        whole =
            QByteArray::fromStdString(std::filesystem::current_path(error).native()) + '/' + path;
    // In Latin-1 each byte is a character, and only "/" and "." matter here.
    return QDir::cleanPath(QString::fromLatin1(whole)).toLatin1();
}

QString hashOf(const QByteArray &path)
{
    const QByteArray digest = QCryptographicHash::hash(path, QCryptographicHash::Sha256).toHex();
    return QString::fromLatin1(digest.left(hashDigits));
}

bool isHash(QStringView text)
{
    return text.size() == hashDigits && std::ranges::all_of(text, [](QChar digit) {
               return (digit >= u'0' && digit <= u'9') || (digit >= u'a' && digit <= u'f');
           });
}

/// Replacement characters take three bytes for one: a long name is cut before its extension.
QString readableName(const QByteArray &path)
{
    const QString name = lastPathComponent(QFile::decodeName(path));
    if (name.toUtf8().size() <= nameLimit)
        return name;
    const QString extension = u'.' + pathExtension(name);
    const qsizetype room = nameLimit - extension.toUtf8().size();
    return cutToBytes(baseName(name), std::max<qsizetype>(0, room)) + extension;
}

QByteArray targetOf(const QString &link)
{
    std::error_code error;
    return QByteArray::fromStdString(
        std::filesystem::read_symlink(nativePath(link), error).native());
}

/// What a stand-in leads to; empty for other paths. Its folder bears the hash of just this, so
/// that no other link is taken for one.
QByteArray targetOfStandIn(const QString &path)
{
    const QString hash = lastPathComponent(containingFolder(path));
    if (!isHash(hash))
        return {};
    const QByteArray target = targetOf(path);
    return hashOf(target) == hash ? target : QByteArray();
}

bool makePrivateFolder(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    return ::mkdir(name.constData(), S_IRWXU) == 0 || QFileInfo(path).isDir();
}

bool makeLink(const QString &link, const QByteArray &target)
{
    const QString folder = standInFolder();
    if (folder.isEmpty() || !QDir().mkpath(containingFolder(folder)) ||
        !makePrivateFolder(folder) || !makePrivateFolder(containingFolder(link)))
        return false;
    const QByteArray name = QFile::encodeName(link);
    // Another thread may have made it meanwhile.
    return ::symlink(target.constData(), name.constData()) == 0 || targetOf(link) == target;
}

} // namespace

void setStandInFolder(const QString &folder)
{
    standInFolder() = folder;
}

QString openablePath(const QByteArray &path)
{
    if (path.isEmpty())
        return {};
    const QByteArray whole = absolutePath(path);
    if (const auto text = decoded(whole))
        return *text;
    const QString link = standInFolder() + u'/' + hashOf(whole) + u'/' + readableName(whole);
    if (targetOf(link) == whole)
        return link;
    const bool isMade = makeLink(link, whole);
    logLine(u"not UTF-8           %@ %@ -> %@", isMade ? u":-)"_s : u":-("_s, link,
            QFile::decodeName(whole));
    return isMade ? link : QString();
}

bool isStandIn(const QString &path)
{
    return !targetOfStandIn(path).isEmpty();
}

QByteArray systemPath(const QString &path)
{
    const QByteArray target = targetOfStandIn(path);
    return target.isEmpty() ? QFile::encodeName(path) : target;
}

QString shownPath(const QString &path)
{
    const QByteArray target = targetOfStandIn(path);
    return target.isEmpty() ? path : QFile::decodeName(target);
}

QString followedLink(const QString &path)
{
    if (!QFileInfo(path).isSymLink() || isStandIn(path))
        return path;
    std::error_code error;
    const auto target = std::filesystem::canonical(nativePath(path), error);
    const QString followed =
        error ? QString() : openablePath(QByteArray::fromStdString(target.native()));
    return followed.isNull() ? path : followed;
}

void sweepStandIns(const QStringList &used)
{
    QStringList kept;
    for (const QString &path : used)
        kept.append(containingFolder(path));
    std::error_code error;
    for (std::filesystem::directory_iterator each(nativePath(standInFolder()), error);
         !error && each != std::filesystem::directory_iterator(); each.increment(error)) {
        const QString folder = QFile::decodeName(each->path().c_str());
        const QString name = lastPathComponent(folder);
        if (kept.contains(folder) || !isHash(name))
            continue;
        // Links go themselves, never what they lead to.
        std::error_code ignored;
        std::filesystem::remove_all(each->path(), ignored);
    }
}

} // namespace vignar
