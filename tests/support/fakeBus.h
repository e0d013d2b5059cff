#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QUrl>

#include <csignal>
#include <functional>
#include <sys/prctl.h>

namespace vignar
{

/// A bus of the test's own, session and system bus at once, on which only fakes answer.
/// To be made before anything asks for a bus.
class PrivateBus
{
public:
    PrivateBus()
    {
        QFile config(m_folder.filePath(QStringLiteral("bus.conf")));
        if (!config.open(QIODevice::WriteOnly))
            return;
        config.write("<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen>"
                     "<policy context='default'><allow send_destination='*' eavesdrop='true'/>"
                     "<allow eavesdrop='true'/><allow own='*'/></policy></busconfig>");
        config.close();
        m_daemon.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       {QStringLiteral("--config-file=") + config.fileName(),
                        QStringLiteral("--nofork"), QStringLiteral("--print-address")});
        if (m_daemon.waitForStarted() && m_daemon.waitForReadyRead())
            m_address = m_daemon.readLine().trimmed();
        // Without a daemon there is to be no bus at all, least of all the user's.
        const QByteArray address = m_address.isEmpty() ? "unix:path=/nowhere" : m_address;
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address);
    }
    ~PrivateBus()
    {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }
    bool isThere() const { return !m_address.isEmpty(); }

private:
    QTemporaryDir m_folder;
    QProcess m_daemon;
    QByteArray m_address;
};

/// A service on the bus that keeps what it is asked and answers as it is told to.
class FakeService : public QDBusVirtualObject
{
public:
    using Answer = std::function<QVariantList(const QDBusMessage &call)>;

    FakeService(const QString &name, const QString &path, Answer answer)
        : m_name(name), m_path(path), m_answer(std::move(answer))
    {
        QDBusConnection bus = connection();
        m_isThere = bus.registerVirtualObject(path, this) && bus.registerService(name);
    }
    ~FakeService() override
    {
        connection().unregisterService(m_name);
        connection().unregisterObject(m_path);
    }
    bool isThere() const { return m_isThere; }

    QList<QDBusMessage> calls;

    void tell(const QString &signal, const QVariantList &arguments) const
    {
        QDBusMessage message = QDBusMessage::createSignal(m_path, m_name, signal);
        message.setArguments(arguments);
        connection().send(message);
    }

    /// Not the connection of the program, so that everything goes over the bus.
    static QDBusConnection connection()
    {
        return QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("fakes"));
    }

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &call, const QDBusConnection &bus) override
    {
        calls.append(call);
        return bus.send(call.createReply(m_answer(call)));
    }

private:
    QString m_name;
    QString m_path;
    Answer m_answer;
    bool m_isThere = false;
};

/// A file manager that notes what it is asked to show.
class FakeFileManager : public FakeService
{
public:
    FakeFileManager()
        : FakeService(QStringLiteral("org.freedesktop.FileManager1"),
                      QStringLiteral("/org/freedesktop/FileManager1"),
                      [](const QDBusMessage &) { return QVariantList(); })
    {
    }

    /// "ShowFolders /home/al/Movies"
    QStringList asked() const
    {
        QStringList lines;
        for (const QDBusMessage &call : calls) {
            const QString url = call.arguments().value(0).toStringList().value(0);
            lines << call.member() + QLatin1Char(' ') + QUrl(url).toLocalFile();
        }
        return lines;
    }
};

} // namespace vignar
