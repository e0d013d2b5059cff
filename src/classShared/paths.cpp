#include "classShared/paths.h"

#include "classShared/fileNames.h"
#include "classShared/lineLog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <array>

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

/// A text that stands for the replacement while the search is being used up. It must
/// neither bring the search back nor stand in the text already. Null when none is found.
QString placeholderFor(const QString &text, const QString &search)
{
    QString candidate = u"ZyW"_s;
    if (!candidate.contains(search) && !text.contains(candidate))
        return candidate;
    candidate = filled(u"%ld", QRandomGenerator::global()->generate());
    return candidate.contains(search) || text.contains(candidate) ? QString() : candidate;
}

/// Replaces until the search no longer occurs. Null when the text grows without end,
/// as "01" to "1100" makes "0011" do.
QString replacedUntilGone(const QString &text, const QString &search, const QString &replacement)
{
    QString result = text;
    result.replace(search, replacement);
    const qsizetype longest = 16 * (result.size() + 1024);
    while (result.contains(search)) {
        if (result.size() > longest)
            return {};
        result.replace(search, replacement);
    }
    return result;
}

QString homeOf(const QByteArray &user)
{
    std::array<char, 16384> buffer;
    passwd entry;
    passwd *found = nullptr;
    getpwnam_r(user.constData(), &entry, buffer.data(), buffer.size(), &found);
    return found ? QFile::decodeName(found->pw_dir) : QString();
}

/// A name may be cut anywhere but between the halves of one character.
QString cutTo(const QString &name, int length)
{
    qsizetype end = qMin<qsizetype>(qMax(0, length), name.size());
    if (end > 0 && end < name.size() && name.at(end - 1).isHighSurrogate())
        --end;
    return name.left(end);
}

QString withExtension(const QString &name, const QString &extension)
{
    return extension.isEmpty() ? name : name + u'.' + extension;
}

} // namespace

QString expandTilde(const QString &path)
{
    if (!path.startsWith(u'~'))
        return path;
    const qsizetype slash = path.indexOf(u'/');
    const QString user = path.mid(1, slash < 0 ? -1 : slash - 1);
    const QString home = user.isEmpty() ? QDir::homePath() : homeOf(user.toLocal8Bit());
    if (home.isEmpty())
        return path;
    return slash < 0 ? home : home + path.mid(slash);
}

QString cutToBytes(const QString &text, qsizetype bytes)
{
    const QByteArray whole = text.toUtf8();
    if (whole.size() <= bytes)
        return text;
    const auto continuesCharacter = [&whole](qsizetype at) {
        return (static_cast<unsigned char>(whole.at(at)) & 0xC0) == 0x80;
    };
    qsizetype end = qMax<qsizetype>(0, bytes);
    while (end > 0 && continuesCharacter(end))
        --end;
    return QString::fromUtf8(whole.first(end));
}

QString findAndReplace(const QString &text, const QString &search, const QString &replacement,
                       bool isRecursive)
{
    if (text.isNull() || search.isNull() || replacement.isNull()) {
        logLine(u"findAndReplace      :-( '%@'->'%@'", search, replacement);
        return {};
    }
    if (search.isEmpty() || !text.contains(search))
        return text;

    QString onePass = text;
    onePass.replace(search, replacement);
    if (!isRecursive)
        return onePass;

    QString result;
    if (!replacement.contains(search)) {
        result = replacedUntilGone(text, search, replacement);
    } else if (const QString placeholder = placeholderFor(text, search); !placeholder.isNull()) {
        result = replacedUntilGone(text, search, placeholder).replace(placeholder, replacement);
    }
    if (!result.isNull())
        return result;
    logLine(u"findAndReplace      : oops, isRecursive != safe (returnStr:'%@')", onePass);
    return onePass;
}

QString trimLeadingTrailing(const QString &text, bool leading, bool trailing)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (trailing && end > 0 && text.at(end - 1) == u' ')
        --end;
    while (leading && begin < end && text.at(begin) == u' ')
        ++begin;
    if (begin == end)
        return {};
    QString trimmed = text.mid(begin, end - begin);
    logLine(u"trimLeadingTrailing…:-) '%@'->'%@'", text, trimmed);
    return trimmed;
}

QString trimPathStr(const QString &path, int n)
{
    // What follows the last point of "Mr. Smith goes to Washington" is no extension.
    constexpr int longestExtension = 12;
    QString name = baseName(path);
    QString extension = pathExtension(path);
    if (extension.size() > longestExtension) {
        logLine(u"trimPathStr() oops! :-( too many chars, post-'.' was not an ");
        name = lastPathComponent(path);
        extension.clear();
    }
    name = findAndReplace(name, u"`"_s, u""_s, false);
    name = findAndReplace(name, u":"_s, u"-"_s, false);
    return joinedPath(containingFolder(path), withExtension(cutTo(name, n), extension));
}

QString masterPath(const QString &path)
{
    constexpr int longestName = 27;
    const QString mark = u"_MASTER"_s;
    QString name = baseName(path);
    if (name.size() + mark.size() > longestName) {
        name = findAndReplace(name, u"."_s, u"_"_s, true);
        name = trimPathStr(name, longestName - static_cast<int>(mark.size()));
    }
    return joinedPath(containingFolder(path), withExtension(name + mark, pathExtension(path)));
}

QString fichier_nom(const QString &path)
{
    if (path.isNull())
        return {};
    return baseName(resolvedPath(expandTilde(path)));
}

QString fichier_dirname(const QString &path)
{
    if (path.isNull())
        return u""_s;
    QString resolved = resolvedPath(expandTilde(path));
    const QString bundleExtension = u".iMovieProject"_s;
    const qsizetype bundle = resolved.indexOf(bundleExtension + u"/Shared Movies/iDVD"_s);
    if (bundle >= 0) {
        resolved.truncate(bundle + bundleExtension.size());
        logLine(u"bundle imovie        : %@", resolved);
    }
    return containingFolder(resolved);
}

QString pathes2Titles(const QString &path, const QStringList &suffixes)
{
    logLine(u"pathes2Titles - begin");
    const QStringList allSuffixes = suffixes + QStringList{u"-PAL"_s, u"-NV"_s, u"-NF"_s};
    logLine(u"suffixesMa : %@", allSuffixes);

    QString name = fichier_nom(path);
    for (const QString &suffix : allSuffixes) {
        if (!suffix.isEmpty() && name.endsWith(suffix))
            name.truncate(name.indexOf(suffix));
    }
    name = findAndReplace(name, u"_"_s, u" "_s, false);
    name = findAndReplace(name, u"  "_s, u" "_s, true);
    name = trimLeadingTrailing(name, true, true);
    logLine(u"str def : %@", name);
    logLine(u"pathes2Titles - end");
    return name.isNull() ? baseName(path) : name;
}

bool pathExists(const QString &path)
{
    if (path.isEmpty())
        return false;
    const QString expanded = expandTilde(path);
    // Without the flag, opening a named pipe would wait for its writer.
    const int file =
        ::open(QFile::encodeName(expanded).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file >= 0)
        ::close(file);
    const QFileInfo info(expanded);
    const bool isThere = file >= 0 || (info.isSymLink() && info.exists());
    logLine(u"pathStr             :-%@ '%@'", isThere ? u")"_s : u"("_s, path);
    return isThere;
}

QString homeUserName()
{
    const QStringList components = QDir::homePath().split(u'/', Qt::SkipEmptyParts);
    if (components.value(0) == "root"_L1)
        return u"root"_s;
    for (const QString &parent : {u"Users"_s, u"home"_s}) {
        const qsizetype index = components.indexOf(parent);
        if (index >= 0)
            return components.value(index + 1);
    }
    return {};
}

} // namespace vignar
