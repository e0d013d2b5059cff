#pragma once

#include <QByteArrayView>
#include <QHash>
#include <QString>

#include <functional>
#include <optional>

namespace vignar
{

/// Which file bears a name, and in which state. A link is looked at itself.
struct FileIdentity {
    enum class Kind { file, link, folder, other };

    Kind kind = Kind::file;
    quint64 device = 0;
    quint64 inode = 0;
    qint64 size = 0;
    /// Time of the last change of its content.
    qint64 seconds = 0;
    qint64 nanoseconds = 0;

    friend bool operator==(const FileIdentity &, const FileIdentity &) = default;
};

/// What bears the name now, a link that leads nowhere included; nothing where it is free.
std::optional<FileIdentity> fileIdentity(const QString &path);

/// Paths that may be replaced, each as long as it still bears the file that was there when
/// that was agreed to.
using Agreements = QHash<QString, FileIdentity>;

/// How the writing of a file ended.
class [[nodiscard]] WriteEnd
{
public:
    enum class State {
        written,
        /// Something bears the name that nobody has agreed to replace.
        taken,
        failed
    };

    /// The reason is meant for the log.
    WriteEnd(State state, QString reason = {}) : m_state(state), m_reason(std::move(reason)) {}

    explicit operator bool() const { return m_state == State::written; }
    State state() const { return m_state; }
    const QString &reason() const { return m_reason; }

private:
    State m_state;
    QString m_reason;
};

/// Where the content lies until it takes its name.
enum class Scratch {
    /// In a file without a name, or a hidden one where the file system has no such files.
    unnamed,
    hidden
};

/// Writes a file completely, then gives it its name in one step, so that the name bears the
/// old file or the new one and never a part. The name is looked at at that moment, and links
/// are never followed: a free name is taken; a name that bears the agreed file is replaced,
/// the new file getting its permissions, a link itself and not its target; any other file,
/// one that is changed or new since the agreement included, stays as it is. A folder at the
/// name is a failure. Any thread.
WriteEnd writeWhole(const QString &path, QByteArrayView content,
                    const std::optional<FileIdentity> &agreed = {},
                    Scratch scratch = Scratch::unnamed);

/// The same over whatever bears the name when the writing begins.
WriteEnd writeOver(const QString &path, QByteArrayView content);

/// What writes the files that others compose.
using FileWriter = std::function<WriteEnd(const QString &path, QByteArrayView content)>;

/// Removes the hidden files that writers which are dead by now have left in a folder: only
/// those of our own naming that belong to the user and that no living writer holds.
void sweepDeadParts(const QString &folder);

} // namespace vignar
