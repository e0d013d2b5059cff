#include "classShared/wholeFile.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

using State = WriteEnd::State;

constexpr mode_t permissionsMask = 0777;
constexpr mode_t usualPermissions = 0666;
constexpr int namesTried = 100;

WriteEnd failed(int error)
{
    return {State::failed, QString::fromLocal8Bit(std::strerror(error))};
}

/// Closes what it holds.
class Descriptor
{
public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    ~Descriptor() { reset(); }
    Q_DISABLE_COPY_MOVE(Descriptor)

    bool isOpen() const { return m_number >= 0; }
    int number() const { return m_number; }
    void reset(int number = -1)
    {
        if (isOpen())
            ::close(m_number);
        m_number = number;
    }

private:
    int m_number;
};

/// Where a file goes: a folder that stays the same one however its path is changed
/// meanwhile, and a name in it.
struct Place {
    int folder;
    QByteArray name;
};

std::optional<struct stat> look(const Place &place)
{
    struct stat found;
    if (::fstatat(place.folder, place.name.constData(), &found, AT_SYMLINK_NOFOLLOW) == 0)
        return found;
    return std::nullopt;
}

FileIdentity::Kind kindOf(mode_t mode)
{
    if (S_ISREG(mode))
        return FileIdentity::Kind::file;
    if (S_ISLNK(mode))
        return FileIdentity::Kind::link;
    return S_ISDIR(mode) ? FileIdentity::Kind::folder : FileIdentity::Kind::other;
}

FileIdentity identityOf(const struct stat &found)
{
    return {kindOf(found.st_mode), found.st_dev,         found.st_ino,
            found.st_size,         found.st_mtim.tv_sec, found.st_mtim.tv_nsec};
}

/// Nothing where the name is free or bears the agreed file; else why it is left alone.
std::optional<WriteEnd> objection(const std::optional<struct stat> &found,
                                  const std::optional<FileIdentity> &agreed)
{
    if (!found)
        return std::nullopt;
    if (S_ISDIR(found->st_mode))
        return failed(EISDIR);
    if (agreed && identityOf(*found) == *agreed)
        return std::nullopt;
    return WriteEnd(State::taken, u"the name is taken"_s);
}

/// Sixteen random digits: what is found under such a name is ours to sweep.
QByteArray partName()
{
    const QByteArray digits =
        QByteArray::number(QRandomGenerator::system()->generate64(), 16).rightJustified(16, '0');
    return ".vignar-" + digits + ".part";
}

bool isPartName(const QString &name)
{
    static const QRegularExpression pattern(u"^\\.vignar-[0-9a-f]{16}\\.part$"_s);
    return pattern.match(name).hasMatch();
}

/// A file on its way to its name. What has not got there is gone with this object; while it
/// lives, its lock tells other runs that it is no leftover.
class Part
{
public:
    explicit Part(int folder) : m_folder(folder) {}
    ~Part()
    {
        if (!m_hidden.isEmpty())
            ::unlinkat(m_folder, m_hidden.constData(), 0);
    }
    Q_DISABLE_COPY_MOVE(Part)

    bool createUnnamed();
    bool createHidden();
    /// Writes it down to the disk: some file systems report only then that they are full.
    bool fill(QByteArrayView content);
    /// Nothing where this kind of part cannot be named here.
    std::optional<WriteEnd> takeName(const Place &place, const std::optional<FileIdentity> &agreed);

private:
    bool link(const QByteArray &name);
    bool makeHidden();
    bool takeFreeName(const QByteArray &name);
    bool replace(const QByteArray &name, const struct stat &old);

    int m_folder;
    Descriptor m_file;
    /// Empty: it has no name.
    QByteArray m_hidden;
};

bool Part::createUnnamed()
{
    m_file.reset(::openat(m_folder, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, usualPermissions));
    if (m_file.isOpen())
        ::flock(m_file.number(), LOCK_EX | LOCK_NB);
    return m_file.isOpen();
}

bool Part::createHidden()
{
    for (int attempt = 0; attempt < namesTried; ++attempt) {
        const Place place{m_folder, partName()};
        m_file.reset(::openat(m_folder, place.name.constData(),
                              O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, usualPermissions));
        if (!m_file.isOpen() && errno != EEXIST)
            return false;
        if (!m_file.isOpen())
            continue;
        ::flock(m_file.number(), LOCK_EX | LOCK_NB);
        // Before the lock was there another run may have swept it.
        if (look(place)) {
            m_hidden = place.name;
            return true;
        }
    }
    return false;
}

bool Part::fill(QByteArrayView content)
{
    while (!content.isEmpty()) {
        const ssize_t count = ::write(m_file.number(), content.data(), size_t(content.size()));
        if (count < 0 && errno != EINTR)
            return false;
        if (count > 0)
            content = content.sliced(count);
    }
    // Some file systems have nothing to synchronise.
    return ::fsync(m_file.number()) == 0 || errno == EINVAL || errno == ENOTSUP;
}

bool Part::link(const QByteArray &name)
{
    if (!m_hidden.isEmpty())
        return ::linkat(m_folder, m_hidden.constData(), m_folder, name.constData(), 0) == 0;
    const QByteArray own = "/proc/self/fd/" + QByteArray::number(m_file.number());
    return ::linkat(AT_FDCWD, own.constData(), m_folder, name.constData(), AT_SYMLINK_FOLLOW) == 0;
}

bool Part::makeHidden()
{
    for (int attempt = 0; m_hidden.isEmpty() && attempt < namesTried; ++attempt) {
        const QByteArray name = partName();
        if (link(name))
            m_hidden = name;
        else if (errno != EEXIST)
            break;
    }
    return !m_hidden.isEmpty();
}

bool Part::takeFreeName(const QByteArray &name)
{
    if (m_hidden.isEmpty())
        return link(name);
    if (::renameat2(m_folder, m_hidden.constData(), m_folder, name.constData(), RENAME_NOREPLACE) ==
        0) {
        m_hidden.clear();
        return true;
    }
    if (errno == EEXIST)
        return false;
    // Some file systems do not know the flag, and of those some have no links either.
    if (link(name))
        return true;
    if (errno == EEXIST || look({m_folder, name})) {
        errno = EEXIST;
        return false;
    }
    if (::renameat(m_folder, m_hidden.constData(), m_folder, name.constData()) != 0)
        return false;
    m_hidden.clear();
    return true;
}

bool Part::replace(const QByteArray &name, const struct stat &old)
{
    // The permissions of a link say nothing.
    if (S_ISREG(old.st_mode))
        ::fchmod(m_file.number(), old.st_mode & permissionsMask);
    if (::renameat(m_folder, m_hidden.constData(), m_folder, name.constData()) != 0)
        return false;
    m_hidden.clear();
    return true;
}

std::optional<WriteEnd> Part::takeName(const Place &place,
                                       const std::optional<FileIdentity> &agreed)
{
    // Replacing takes a name of its own first; the look follows it as closely as possible.
    if (agreed && !makeHidden())
        return std::nullopt;
    const bool wasUnnamed = m_hidden.isEmpty();
    const auto found = look(place);
    if (const auto left = objection(found, agreed))
        return left;
    if (found ? replace(place.name, *found) : takeFreeName(place.name))
        return WriteEnd(State::written);
    if (!found && errno == EEXIST)
        return WriteEnd(State::taken, u"the name was taken just now"_s);
    return wasUnnamed ? std::nullopt : std::optional(failed(errno));
}

} // namespace

std::optional<FileIdentity> fileIdentity(const QString &path)
{
    if (const auto found = look({AT_FDCWD, QFile::encodeName(path)}))
        return identityOf(*found);
    return std::nullopt;
}

WriteEnd writeWhole(const QString &path, QByteArrayView content,
                    const std::optional<FileIdentity> &agreed, Scratch scratch)
{
    const QFileInfo info(path);
    const Descriptor folder(
        ::open(QFile::encodeName(info.path()).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen())
        return failed(errno);
    const Place place{folder.number(), QFile::encodeName(info.fileName())};
    // Not worth the writing.
    if (const auto left = objection(look(place), agreed))
        return *left;
    int error = 0;
    for (const auto create : {&Part::createUnnamed, &Part::createHidden}) {
        if (create == &Part::createUnnamed && scratch == Scratch::hidden)
            continue;
        Part part(folder.number());
        if ((part.*create)()) {
            if (!part.fill(content))
                return failed(errno);
            if (const auto end = part.takeName(place, agreed))
                return *end;
        }
        error = errno;
    }
    return failed(error);
}

WriteEnd writeOver(const QString &path, QByteArrayView content)
{
    return writeWhole(path, content, fileIdentity(path));
}

void sweepDeadParts(const QString &folder)
{
    const Descriptor opened(
        ::open(QFile::encodeName(folder).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    std::error_code ignored;
    const std::filesystem::path native(QFile::encodeName(folder).toStdString());
    for (std::filesystem::directory_iterator entry(native, ignored), end; entry != end;
         entry.increment(ignored)) {
        const QByteArray name = QByteArray::fromStdString(entry->path().filename().string());
        if (!isPartName(QFile::decodeName(name)))
            continue;
        const Descriptor file(::openat(opened.number(), name.constData(),
                                       O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        struct stat found;
        const bool isOurs = file.isOpen() && ::fstat(file.number(), &found) == 0 &&
                            S_ISREG(found.st_mode) && found.st_uid == ::geteuid();
        if (isOurs && ::flock(file.number(), LOCK_EX | LOCK_NB) == 0)
            ::unlinkat(opened.number(), name.constData(), 0);
    }
}

} // namespace vignar
