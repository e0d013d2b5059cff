#include "classShared/lineLog.h"
#include "settings/logFiles.h"
#include "settings/stringTables.h"
#include "shell/fileManager.h"
#include "shell/platform/batchPresence.h"
#include "shell/platform/dbusEndNotifier.h"
#include "shell/platform/dbusSleepInhibitor.h"
#include "shell/platform/dbusTaskbarProgress.h"
#include "shell/platform/problemReport.h"
#include "shell/platform/reportDialog.h"
#include "shell/platform/singleInstance.h"
#include "support/fakeBus.h"
#include "support/urlSink.h"

#include <QApplication>
#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusUnixFileDescriptor>
#include <QDir>
#include <QLocalSocket>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSaveFile>
#include <QSignalSpy>
#include <QTest>

#include <fcntl.h>
#include <unistd.h>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

const QString instanceName = u"startedTwice"_s;
const QString firstRole = u"0"_s;
const QString laterRole = u"1"_s;
const QString unansweredRole = u"2"_s;

QString socketPath()
{
    return qEnvironmentVariable("XDG_RUNTIME_DIR") + u'/' + instanceName + u".socket"_s;
}

/// A start of the little program.
class Start
{
public:
    explicit Start(const QStringList &paths = {}, int patience = 10000)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(VIGNAR_STARTED_TWICE),
                        QStringList{QString::number(patience)} + paths);
    }
    ~Start() { kill(SIGKILL); }
    /// Its next line; null when it ends without one.
    QString line()
    {
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead(20000))
                return {};
        }
        return QString::fromUtf8(m_process.readLine()).trimmed();
    }
    void kill(int signal)
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        ::kill(pid_t(m_process.processId()), signal);
        if (signal == SIGKILL)
            m_process.waitForFinished();
    }
    bool isEndedWell() { return m_process.waitForFinished() && m_process.exitCode() == 0; }

private:
    QProcess m_process;
};

QString hex(const QString &path)
{
    return QString::fromLatin1(path.toUtf8().toHex());
}

QStringList linesOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
}

/// A program for folders, which notes what it is asked to open. The one named first is the
/// preferred one.
void installFolderProgram(const QString &id, const QString &executable)
{
    static QStringList ids;
    ids << id + u".desktop"_s;
    const QString applications = qEnvironmentVariable("XDG_DATA_HOME") + u"/applications"_s;
    QVERIFY(QDir().mkpath(applications));
    const auto put = [&applications](const QString &name, const QString &text) {
        QSaveFile file(applications + u'/' + name);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) > 0 && file.commit());
    };
    put(ids.last(),
        u"[Desktop Entry]\nType=Application\nName=%1\nMimeType=inode/directory;\n"
        "Exec=%2 -c 'echo \"$1\" >>%3/%1.asked' sh %f\n"_s.arg(id, executable, QDir::tempPath()));
    put(u"mimeapps.list"_s, u"[Default Applications]\ninode/directory=%1;\n[Added Associations]\n"
                            "inode/directory=%2;\n"_s.arg(ids.first(), ids.join(u';')));
}

class RecordingServices : public SleepInhibitor, public TaskbarProgress, public EndNotifier
{
public:
    explicit RecordingServices(QStringList &events) : m_events(events) {}
    void inhibit(const QString &) override { m_events << u"awake"_s; }
    void release() override { m_events << u"free"_s; }
    void show(double done) override { m_events << QString::number(done); }
    void hide() override { m_events << u"hidden"_s; }
    void show(const EndNotice &notice) override { m_events << notice.title; }
    void withdraw() override {}

private:
    QStringList &m_events;
};

} // namespace

class TestPlatform : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aLaterStartHandsOverItsFiles()
    {
        Start first;
        QCOMPARE(first.line(), firstRole);
        QCOMPARE(int(QFileInfo(socketPath()).permissions() & 0x0077), 0);

        QStringList paths{u"-dash"_s, u"/two\nlines \\ $(touch x)"_s, u"/ünï 😀\u0301"_s, u""_s};
        for (int number = 0; number < 200; ++number)
            paths << u"/%1/"_s.arg(number) + QString(4000, u'é');
        Start second(paths);
        QCOMPARE(second.line(), laterRole);
        QVERIFY(second.isEndedWell());
        QCOMPARE(first.line(), u"got token"_s);
        for (const QString &path : paths)
            QCOMPARE(first.line(), hex(path));
    }

    void theLockOfADeadProcessIsTakenOver()
    {
        Start dead;
        QCOMPARE(dead.line(), firstRole);
        dead.kill(SIGKILL);
        QVERIFY(QFileInfo::exists(socketPath()));
        Start next;
        QCOMPARE(next.line(), firstRole);
        Start later({u"/film"_s});
        QCOMPARE(later.line(), laterRole);
        QCOMPARE(next.line(), u"got token"_s);
    }

    void aProcessThatHangsIsToldOf()
    {
        Start first;
        QCOMPARE(first.line(), firstRole);
        first.kill(SIGSTOP);
        Start second({}, 300);
        QCOMPARE(second.line(), unansweredRole);
    }

    void aStartDuringTheEndBecomesTheFirst()
    {
        auto ending = std::make_unique<SingleInstance>(instanceName);
        QCOMPARE(ending->claim({}), SingleInstance::Role::first);
        QSignalSpy handedOver(ending.get(), &SingleInstance::handedOver);
        ending->close();
        QCOMPARE(Start({u"/film"_s}, 300).line(), unansweredRole);
        QVERIFY(handedOver.isEmpty());
        Start next({u"/film"_s});
        ending.reset();
        QCOMPARE(next.line(), firstRole);
    }

    void strangeMessagesAreRefused_data()
    {
        QTest::addColumn<QByteArray>("message");
        const QByteArray mark("Vgn1");
        const auto size = [](char last) { return QByteArray(7, '\0') + last; };
        QTest::newRow("of another program") << QByteArray(64, 'x');
        QTest::newRow("of no length") << mark + size(0) + "xxxx";
        QTest::newRow("of any length") << mark + QByteArray(8, '\x7f');
        QTest::newRow("of a negative length") << mark + QByteArray(8, '\xff');
        QTest::newRow("more paths than there are")
            << mark + size(20) + QByteArray(4, '\0') + QByteArray(4, '\x7f');
    }
    void strangeMessagesAreRefused()
    {
        QFETCH(QByteArray, message);
        SingleInstance instance(instanceName);
        QCOMPARE(instance.claim({}), SingleInstance::Role::first);
        QSignalSpy handedOver(&instance, &SingleInstance::handedOver);
        QLocalSocket socket;
        socket.connectToServer(socketPath());
        QVERIFY(socket.waitForConnected());
        socket.write(message);
        QTRY_COMPARE_WITH_TIMEOUT(socket.state(), QLocalSocket::UnconnectedState, 3000);
        QVERIFY(handedOver.isEmpty() && socket.bytesAvailable() == 0);
    }

    void theBatchKeepsTheComputerAwakeWhileItWorks()
    {
        QStringList events;
        const auto service = [&] { return std::make_unique<RecordingServices>(events); };
        BatchPresence presence({service(), service(), service()});
        presence.setState({true, false, 0.25});
        presence.setState({true, true, 0.25});
        presence.setState({false, false, 0});
        presence.tellEnd({u"seen"_s, {}, {}}, true);
        presence.tellEnd({u"unseen"_s, {}, {}}, false);
        QCOMPARE(events, QStringList({u"awake"_s, u"0.25"_s, u"free"_s, u"0.25"_s, u"free"_s,
                                      u"hidden"_s, u"unseen"_s}));
    }

    void reportsLeaveOutWhoTheUserIs()
    {
        QCOMPARE(withoutHome(u"'/home/al/a' /home/alice /home/al-b /home/al"_s, u"/home/al"_s),
                 u"'~/a' /home/alice /home/al-b ~"_s);
        QCOMPARE(withoutHome(u"/a/b"_s, u"/"_s), u"/a/b"_s);
        QCOMPARE(endOfLines(u"one\ntwo\nthree\n"_s, 2, 100), u"two\nthree"_s);
        QCOMPARE(endOfLines(u"one\ntwo\nthree\n"_s, 9, 10), u"two\nthree"_s);
        QCOMPARE(endOfLines(QString(50, u'x'), 9, 10), QString());
    }

    void reportsGoToTheMailProgramAsTheUserLeavesThem()
    {
        startLogs(StandardStreams::keep);
        logLine(u"opened %@/film.mp4", QDir::homePath());
        ReportDialog dialog({u"Vignar 1"_s});
        auto *letter = dialog.findChild<QPlainTextEdit *>();
        const QString proposed = letter->toPlainText();
        QVERIFY2(proposed.contains(u"Vignar 1") && proposed.contains(u"opened ~/film.mp4"),
                 qPrintable(proposed));
        letter->setPlainText(u"a & b?\nbcc=x#y 100%"_s);
        QDesktopServices::setUrlHandler(u"mailto"_s, this, "takeMail");
        for (auto *button : dialog.findChildren<QPushButton *>()) {
            if (button->text() == localised(u"V_report_mail"_s))
                button->click();
        }
        QDesktopServices::unsetUrlHandler(u"mailto"_s);
        QVERIFY2(m_mail.toEncoded().endsWith("&body=a%20%26%20b%3F%0D%0Abcc%3Dx%23y%20100%25"),
                 m_mail.toEncoded().constData());
    }
    void takeMail(const QUrl &url) { m_mail = url; }

private:
    QUrl m_mail;
};

/// What goes over the bus. A bus that did not start skips all of it.
class TestDesktopBus : public QObject
{
    Q_OBJECT

public:
    explicit TestDesktopBus(bool isBusThere) : m_isBusThere(isBusThere) {}

private Q_SLOTS:
    void initTestCase()
    {
        if (!m_isBusThere)
            QSKIP("dbus-daemon is not installed");
    }

    void theLoginManagerKeepsAwake()
    {
        int ourEnd = -1;
        FakeService manager(u"org.freedesktop.login1"_s, u"/org/freedesktop/login1"_s,
                            [&](const QDBusMessage &) -> QVariantList {
                                int ends[2] = {-1, -1};
                                if (pipe2(ends, O_NONBLOCK | O_CLOEXEC) != 0)
                                    return {};
                                ourEnd = ends[0];
                                const QDBusUnixFileDescriptor lock(ends[1]);
                                ::close(ends[1]);
                                return {QVariant::fromValue(lock)};
                            });
        QVERIFY(manager.isThere());
        // The lock is free once the last copy of its end is closed.
        const auto isFree = [&] {
            char byte = 0;
            return ourEnd >= 0 && read(ourEnd, &byte, 1) == 0;
        };
        DBusSleepInhibitor inhibitor;
        inhibitor.inhibit(u"why"_s);
        inhibitor.inhibit(u"again"_s);
        QTRY_COMPARE(inhibitor.holder(), DBusSleepInhibitor::Holder::loginManager);
        QCOMPARE(manager.calls.size(), 1);
        QCOMPARE(manager.calls[0].arguments(),
                 QVariantList({u"sleep:idle"_s, u"Vignar"_s, u"why"_s, u"block"_s}));
        QVERIFY(!isFree());
        inhibitor.release();
        QTRY_VERIFY(isFree());

        // An answer that comes after the release is given back, too.
        ::close(std::exchange(ourEnd, -1));
        inhibitor.inhibit(u"why"_s);
        inhibitor.release();
        QTRY_VERIFY(isFree());
        QCOMPARE(inhibitor.holder(), DBusSleepInhibitor::Holder::none);
        ::close(ourEnd);
    }

    void theScreenSaverIsNext()
    {
        FakeService saver(u"org.freedesktop.ScreenSaver"_s, u"/org/freedesktop/ScreenSaver"_s,
                          [](const QDBusMessage &call) -> QVariantList {
                              return call.member() == u"Inhibit" ? QVariantList{41u}
                                                                 : QVariantList();
                          });
        QVERIFY(saver.isThere());
        DBusSleepInhibitor inhibitor;
        inhibitor.inhibit(u"why"_s);
        QTRY_COMPARE(inhibitor.holder(), DBusSleepInhibitor::Holder::screenSaver);
        inhibitor.release();
        QTRY_COMPARE(saver.calls.size(), 2);
        QCOMPARE(saver.calls[1].member(), u"UnInhibit"_s);
        QCOMPARE(saver.calls[1].arguments(), QVariantList{41u});
    }

    void aDesktopWithoutServicesIsBorneWith()
    {
        QStringList lines;
        const LogSink before = setLogSink([&](const QString &line) { lines << line; });
        DBusSleepInhibitor inhibitor;
        inhibitor.inhibit(u"why"_s);
        DBusEndNotifier notifier;
        notifier.show({u"The end"_s, {}, {}});
        DBusTaskbarProgress().show(0.5);
        QTRY_COMPARE(lines.filter(u":-("_s).size(), 3);
        setLogSink(before);
        QCOMPARE(inhibitor.holder(), DBusSleepInhibitor::Holder::none);
    }

    void theEndIsNotified()
    {
        FakeService desktop(u"org.freedesktop.Notifications"_s, u"/org/freedesktop/Notifications"_s,
                            [](const QDBusMessage &) -> QVariantList { return {7u}; });
        QVERIFY(desktop.isThere());
        DBusEndNotifier notifier;
        QSignalSpy activated(&notifier, &EndNotifier::activated);
        QSignalSpy folderRequested(&notifier, &EndNotifier::folderRequested);
        notifier.show({u"The end"_s, u"Sheets made: 3"_s, u"Open"_s});
        QTRY_COMPARE(desktop.calls.size(), 1);
        const QVariantList told = desktop.calls[0].arguments();
        QCOMPARE(desktop.calls[0].signature(), u"susssasa{sv}i"_s);
        QCOMPARE(told.mid(3, 2), QVariantList({u"The end"_s, u"Sheets made: 3"_s}));
        QCOMPARE(told[5].toStringList(),
                 QStringList({u"default"_s, u"The end"_s, u"folder"_s, u"Open"_s}));
        QCOMPARE(qdbus_cast<QVariantMap>(told[6]).value(u"desktop-entry"_s),
                 QVariant(u"org.vignar.Vignar"_s));

        desktop.tell(u"ActionInvoked"_s, {8u, u"folder"_s});
        desktop.tell(u"ActivationToken"_s, {7u, u"token"_s});
        desktop.tell(u"ActionInvoked"_s, {7u, u"default"_s});
        QTRY_COMPARE(activated.size(), 1);
        QCOMPARE(activated[0][0].toByteArray(), "token");
        QVERIFY(folderRequested.isEmpty());
        desktop.tell(u"ActionInvoked"_s, {7u, u"folder"_s});
        QTRY_COMPARE(folderRequested.size(), 1);

        notifier.show({u"Another end"_s, {}, {}});
        QTRY_COMPARE(desktop.calls.size(), 2);
        QCOMPARE(desktop.calls[1].arguments()[1], QVariant(7u));
        notifier.withdraw();
        QTRY_COMPARE(desktop.calls.size(), 3);
        QCOMPARE(desktop.calls[2].member(), u"CloseNotification"_s);
    }

    void docksAreToldOfTheProgress()
    {
        m_progress.clear();
        QDBusConnection bus = FakeService::connection();
        QVERIFY(bus.connect({}, {}, u"com.canonical.Unity.LauncherEntry"_s, u"Update"_s, this,
                            SLOT(launcherUpdate(QString, QVariantMap))));
        // The bus has taken the subscription once it has answered.
        QVERIFY(bus.interface()->isServiceRegistered(u"org.freedesktop.DBus"_s));
        {
            DBusTaskbarProgress taskbar;
            for (const double done : {0.0, 0.001, 0.5, 0.505, 2.0})
                taskbar.show(done);
        }
        QTRY_COMPARE(m_progress, QList<double>({0.0, 0.5, 1.0, -1.0}));
        QCOMPARE(m_launcherUri, u"application://org.vignar.Vignar.desktop"_s);
    }
    void launcherUpdate(const QString &uri, const QVariantMap &properties)
    {
        m_launcherUri = uri;
        const bool isVisible = properties.value(u"progress-visible"_s).toBool();
        m_progress << (isVisible ? properties.value(u"progress"_s).toDouble() : -1);
    }

    void theFileManagerShowsFilesAndFolders()
    {
        const QString folder = QDir::tempPath() + u"/100% #1 é"_s;
        QVERIFY(QDir().mkpath(folder) && QFile(folder + u"/a.jpg"_s).open(QIODevice::WriteOnly));
        FakeFileManager manager;
        QVERIFY(manager.isThere());
        QList<bool> shown;
        const auto note = [&shown](bool isShown) { shown << isShown; };
        showInFileManager(folder + u"/a.jpg"_s, this, note);
        showInFileManager(folder + u"/gone.jpg"_s, this, note);
        openFolder(folder, this, note);
        QTRY_COMPARE(shown, QList<bool>({true, true, true}));
        QCOMPARE(manager.asked(),
                 QStringList({u"ShowItems "_s + folder + u"/a.jpg"_s, u"ShowFolders "_s + folder,
                              u"ShowFolders "_s + folder}));
        QVERIFY2(manager.calls[1].arguments()[0].toStringList()[0].endsWith(
                     "/100%25%20%231%20%C3%A9"_L1),
                 "the address is not encoded");
        openFolder(folder + u"/nowhere"_s, this, note);
        QCOMPARE(shown, QList<bool>({true, true, true, false}));
    }

    void foldersNeverComeBackToThisProgram()
    {
        const QString folder = QDir::tempPath() + u"/films"_s;
        QVERIFY(QDir().mkpath(folder));
        std::optional<bool> shown;
        const auto tryOnce = [&] {
            shown.reset();
            openFolder(folder, this, [&shown](bool isShown) { shown = isShown; });
            return QTest::qWaitFor([&] { return shown.has_value(); }) && *shown;
        };
        // Both of these are ours, and the first is even the user's choice.
        installFolderProgram(u"org.vignar.Vignar"_s, u"/bin/sh"_s);
        installFolderProgram(u"mine"_s, QCoreApplication::applicationFilePath());
        QVERIFY(!tryOnce());
        installFolderProgram(u"other"_s, u"/bin/sh"_s);
        // Programs that are installed while others run are noticed a moment later.
        bool isShown = false;
        QTRY_VERIFY(isShown || (isShown = tryOnce()));
        const QString asked = QDir::tempPath() + u"/other.asked"_s;
        QTRY_COMPARE(linesOf(asked), QStringList{folder});
        QVERIFY(!QFile::exists(QDir::tempPath() + u"/org.vignar.Vignar.asked"_s));
        QVERIFY(!QFile::exists(QDir::tempPath() + u"/mine.asked"_s));
    }

private:
    bool m_isBusThere;
    QString m_launcherUri;
    QList<double> m_progress;
};

int main(int argc, char **argv)
{
    const PrivateBus bus;
    // No program of the system's is there for folders.
    qputenv("XDG_DATA_DIRS", "/nowhere");
    QApplication application(argc, argv);
    TestPlatform platform;
    TestDesktopBus desktopBus(bus.isThere());
    return QTest::qExec(&platform, argc, argv) | QTest::qExec(&desktopBus, argc, argv);
}

#include "test_platform.moc"
