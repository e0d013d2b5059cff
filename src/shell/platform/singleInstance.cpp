#include "shell/platform/singleInstance.h"

#include "classShared/lineLog.h"

#include <QDataStream>
#include <QDeadlineTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>

namespace vignar
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr auto streamVersion = QDataStream::Qt_6_4;
/// First of every message, so that a program of another version is not misread.
constexpr quint32 messageMark = 0x56676e31;
constexpr auto retryInterval = 50ms;
/// A peer that sends no whole message is let go.
constexpr auto receiveLimit = 5s;
constexpr char acknowledgement = '+';

QByteArray packed(const Handover &handover)
{
    QByteArray message;
    QDataStream stream(&message, QIODevice::WriteOnly);
    stream.setVersion(streamVersion);
    stream << messageMark << qint64(0) << handover.startupToken << quint32(handover.paths.size());
    for (const QString &path : handover.paths)
        stream << path;
    // The length is that of the whole message, mark and length included.
    stream.device()->seek(sizeof messageMark);
    stream << qint64(message.size());
    return message;
}

/// Bytes that the message at the front of the data will have; -1 when it is none of ours.
qint64 announcedSize(const QByteArray &data)
{
    QDataStream stream(data);
    stream.setVersion(streamVersion);
    quint32 mark = 0;
    qint64 size = 0;
    stream >> mark >> size;
    const bool isOurs = mark == messageMark && size > 0 && size <= SingleInstance::messageLimit;
    return isOurs ? size : -1;
}

bool unpack(const QByteArray &message, Handover &handover)
{
    QDataStream stream(message);
    stream.setVersion(streamVersion);
    quint32 mark = 0;
    qint64 size = 0;
    quint32 count = 0;
    stream >> mark >> size >> handover.startupToken >> count;
    // One by one: a list read as a whole believes its count, and takes the memory for it.
    for (; count > 0 && stream.status() == QDataStream::Ok; --count) {
        QString path;
        stream >> path;
        handover.paths.append(path);
    }
    return stream.status() == QDataStream::Ok && stream.atEnd();
}

int milliseconds(const QDeadlineTimer &deadline)
{
    return int(deadline.remainingTime());
}

} // namespace

SingleInstance::SingleInstance(const QString &name, QObject *parent)
    : QObject(parent), m_server(new QLocalServer(this))
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        return;
    m_socketPath = folder + u'/' + name + u".socket"_s;
    m_lock = std::make_unique<QLockFile>(folder + u'/' + name + u".lock"_s);
    // The program may run for days: only the death of its process makes a lock stale.
    m_lock->setStaleLockTime(0);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    connect(m_server, &QLocalServer::newConnection, this, &SingleInstance::greet);
}

SingleInstance::~SingleInstance() = default;

SingleInstance::Role SingleInstance::claim(const Handover &handover,
                                           std::chrono::milliseconds patience)
{
    if (!m_lock)
        return Role::unknown;
    const QByteArray message = packed(handover);
    const QDeadlineTimer deadline(patience);
    do {
        if (m_lock->tryLock(0))
            return becomeFirst();
        if (m_lock->error() != QLockFile::LockFailedError) {
            logLine(u"singleInstance      :-( lock %ld", int(m_lock->error()));
            return Role::unknown;
        }
        if (handOver(message, std::chrono::milliseconds(milliseconds(deadline))))
            return Role::later;
        // The first is about to listen, or about to end.
        QThread::msleep(retryInterval.count());
    } while (!deadline.hasExpired());
    return Role::unanswered;
}

SingleInstance::Role SingleInstance::becomeFirst()
{
    // Left by a process that died; the lock says that nobody listens there.
    QLocalServer::removeServer(m_socketPath);
    if (!m_server->listen(m_socketPath))
        logLine(u"singleInstance      :-( %@", m_server->errorString());
    return Role::first;
}

bool SingleInstance::handOver(const QByteArray &message, std::chrono::milliseconds patience) const
{
    const QDeadlineTimer deadline(patience);
    QLocalSocket socket;
    socket.connectToServer(m_socketPath);
    if (message.size() > messageLimit || !socket.waitForConnected(milliseconds(deadline)))
        return false;
    socket.write(message);
    while (socket.bytesToWrite() > 0) {
        if (!socket.waitForBytesWritten(milliseconds(deadline)))
            return false;
    }
    while (socket.bytesAvailable() == 0) {
        if (!socket.waitForReadyRead(milliseconds(deadline)))
            return false;
    }
    return socket.read(1) == QByteArray(1, acknowledgement);
}

void SingleInstance::close()
{
    m_server->close();
}

void SingleInstance::greet()
{
    while (QLocalSocket *socket = m_server->nextPendingConnection()) {
        socket->setReadBufferSize(messageLimit);
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { receive(*socket); });
        QTimer::singleShot(receiveLimit, socket, &QLocalSocket::abort);
        receive(*socket);
    }
}

void SingleInstance::receive(QLocalSocket &socket)
{
    const QByteArray start = socket.peek(sizeof messageMark + sizeof(qint64));
    if (start.size() < qsizetype(sizeof messageMark + sizeof(qint64)))
        return;
    const qint64 size = announcedSize(start);
    if (size >= 0 && socket.bytesAvailable() < size)
        return;
    Handover handover;
    if (size < 0 || !unpack(socket.read(size), handover)) {
        logLine(u"singleInstance      :-( message");
        socket.abort();
        return;
    }
    // At once: what the handover sets going may take its time.
    socket.write(&acknowledgement, 1);
    socket.flush();
    socket.disconnectFromServer();
    Q_EMIT handedOver(handover);
}

} // namespace vignar
