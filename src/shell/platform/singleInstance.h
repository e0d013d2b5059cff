#pragma once

#include <QLockFile>
#include <QObject>
#include <QStringList>

#include <chrono>
#include <memory>

class QLocalServer;
class QLocalSocket;

namespace vignar
{

/// What a start of the program hands to the one that runs already.
struct Handover {
    /// As they were given, made absolute; nobody has looked whether they exist.
    QStringList paths;
    QByteArray startupToken;
};

/// Sees to it that a user runs the program once.
///
/// A lock file in the user's runtime folder says who is first, a socket beside it, open
/// to the user alone, takes what later starts hand over. The lock of a process that has
/// died is taken over. Needs a QCoreApplication.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    enum class Role {
        /// Ours is the one that runs; handedOver() tells of later starts.
        first,
        /// Another runs and has taken what we had.
        later,
        /// Another runs but does not answer.
        unanswered,
        /// There is no runtime folder to agree in; go on as if alone.
        unknown
    };

    /// Bytes of one message: Linux lets a command line have 6 MiB at most, which are here
    /// up to two bytes for each of its own.
    static constexpr qint64 messageLimit = 16 * 1024 * 1024;
    static constexpr std::chrono::milliseconds usualPatience{15000};

    /// name is that of the lock and the socket.
    explicit SingleInstance(const QString &name, QObject *parent = nullptr);
    ~SingleInstance() override;

    /// Becomes the first, or hands over to the one that is. Waits for at most patience
    /// while the first starts or ends.
    Role claim(const Handover &handover, std::chrono::milliseconds patience = usualPatience);

    /// Takes nothing more: a start from now on waits until this process has ended, and
    /// becomes the first.
    void close();

Q_SIGNALS:
    /// Only to the first, from its event loop.
    void handedOver(const vignar::Handover &handover);

private:
    Role becomeFirst();
    bool handOver(const QByteArray &message, std::chrono::milliseconds patience) const;
    void greet();
    void receive(QLocalSocket &socket);

    QString m_socketPath;
    std::unique_ptr<QLockFile> m_lock;
    QLocalServer *m_server;
};

} // namespace vignar
