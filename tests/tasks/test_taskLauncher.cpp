#include "tasks/taskLauncher.h"

#include "tasks/testPlaces.h"

#include <QTest>

#include <csignal>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace vignar;

namespace
{

const QString tool = QStringLiteral(FAKE_TOOL);
const QString killedEnd = u"end -7654312"_s;

/// A launcher whose callbacks are written down; chunks in a row count as one.
struct Run : TaskLauncherDelegate {
    std::unique_ptr<taskLauncher> launcher = std::make_unique<taskLauncher>();
    QStringList log;
    QByteArray bytes;
    bool isTerminatedByFirstChunk = false;

    explicit Run(const QStringList &arguments = {}, bool isRaw = false)
    {
        launcher->setDelegate(this);
        launcher->dontConvertDataToString(isRaw);
        launcher->launchTasksWithArguments(arguments);
    }
    void taskLauncherDidReceiveNewString(taskLauncher &told, const QString &text) override
    {
        taskLauncherDidReceiveNewData(told, text.toUtf8());
    }
    void taskLauncherDidReceiveNewData(taskLauncher &told, const QByteArray &data) override
    {
        bytes += data;
        if (log.isEmpty() || log.constLast() != u"chunk")
            log << u"chunk"_s;
        if (isTerminatedByFirstChunk) {
            told.tasklauncherTerminate();
            launcher.release()->deleteLater();
        }
    }
    void taskLauncherTaskDidSuspend(taskLauncher &) override { log << u"suspend"_s; }
    void taskLauncherTaskDidResume(taskLauncher &) override { log << u"resume"_s; }
    void taskLauncherTaskDidEnd(taskLauncher &told) override
    {
        log << u"end %1"_s.arg(told.terminationStatus());
    }
    bool isEnded() const { return !log.isEmpty() && log.constLast().startsWith(u"end"); }
};

/// The letter of /proc: 'S' asleep, 'T' stopped, 'Z' dead and not collected; '-' when gone.
char processState(qint64 pid)
{
    QFile file(u"/proc/%1/stat"_s.arg(pid));
    const QByteArray line = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray(") -");
    return line.at(line.lastIndexOf(')') + 2);
}

} // namespace

class TestTaskLauncher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusedLaunches_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("code");
        QTest::newRow("nothing") << QStringList() << 1;
        QTest::newRow("empty first stage") << QStringList{u"|"_s, tool} << 2;
        QTest::newRow("empty middle stage") << QStringList{tool, u"|"_s, u"|"_s, tool} << 2;
        QTest::newRow("empty last stage") << QStringList{tool, u"|"_s} << 3;
        QTest::newRow("tool of the search path") << QStringList{u"true"_s} << 3;
        QTest::newRow("missing later tool") << QStringList{tool, u"|"_s, u"/no/tool"_s} << 3;
    }
    void refusedLaunches()
    {
        QFETCH(QStringList, arguments);
        Run run;
        QTEST(int(run.launcher->launchTasksWithArguments(arguments)), "code");
        QVERIFY(!run.launcher->isRunning());
        run.launcher->tasklauncherTerminate();
        QCOMPARE(run.log, QStringList());
        QCOMPARE(run.launcher->launchTasksWithArguments({tool}), taskLauncher::launched);
        QTRY_COMPARE(run.log, QStringList{u"end 0"_s});
    }

    void endStatus_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::newRow("exit code") << QStringList{tool, u"exit"_s, u"7"_s} << 7;
        QTest::newRow("ended by a signal") << QStringList{tool, u"crash"_s} << 128 + SIGTERM;
        QTest::newRow("not executable") << QStringList{u"/etc/passwd"_s} << 126;
        QTest::newRow("earlier stage not executable")
            << QStringList{u"/etc/passwd"_s, u"|"_s, tool, u"copy"_s} << 126;
    }
    void endStatus()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        Run run(arguments);
        QVERIFY(run.launcher->isRunning() && run.log.isEmpty());
        QTRY_COMPARE(run.log, QStringList{u"end %1"_s.arg(status)});
        QVERIFY(!run.launcher->isRunning());
    }

    void whatAToolGetsAndGives_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("output");
        QTest::newRow("arguments as they stand, home expanded")
            << QStringList{tool, u"args"_s, u"a b"_s, u"$(id)"_s, u"~/x"_s, u"~://x"_s}
            << "a b\n$(id)\n" + QDir::homePath().toUtf8() + "/x\n~://x\n";
        QTest::newRow("resource, with the tools' environment and no input")
            << QStringList{u"probe"_s, u"state"_s} << "no input, en_US.UTF-8"_ba;
        QTest::newRow("pipeline, without the errors of earlier stages")
            << QStringList{tool, u"streams"_s, u"|"_s, tool, u"copy"_s} << "out\n"_ba;
        QTest::newRow("errors") << QStringList{u"/bin/sh"_s, u"-c"_s, u"echo no >&2"_s}
                                << "no\n"_ba;
        QTest::newRow("all output before the end")
            << QStringList{tool, u"flood"_s, u"3000000"_s} << QByteArray(3000000, 'x');
    }
    void whatAToolGetsAndGives()
    {
        QFETCH(QStringList, arguments);
        const TestPlaces places;
        QVERIFY(QDir(places.folder.path()).mkdir(u"resources"_s));
        QVERIFY(QFile::link(tool, places.folder.filePath(u"resources/probe"_s)));
        Run run(arguments);
        QTRY_COMPARE(run.log, (QStringList{u"chunk"_s, u"end 0"_s}));
        QTEST(run.bytes, "output");
    }

    void asciiTextOrBytes()
    {
        Run text({tool, u"args"_s, u"café"_s});
        QTRY_COMPARE(text.log, QStringList{u"end 0"_s});
        Run raw({tool, u"args"_s, u"café"_s}, true);
        QTRY_COMPARE(raw.log, (QStringList{u"chunk"_s, u"end 0"_s}));
        QCOMPARE(raw.bytes, "caf\xC3\xA9\n");
    }

    void stageThatOutlivesTheLastIsKilled()
    {
        Run run({tool, u"hang"_s, u"|"_s, u"/usr/bin/head"_s, u"-n1"_s});
        QTRY_COMPARE(run.log, (QStringList{u"chunk"_s, u"end 0"_s}));
        QTRY_COMPARE(processState(run.bytes.toLongLong()), '-');
    }

    void suspendedRunIsKilledByBroadcast()
    {
        Run run({tool, u"hang"_s});
        QTRY_VERIFY(!run.bytes.isEmpty());
        const qint64 pid = run.bytes.toLongLong();
        // A session of its own keeps a Ctrl-C on the terminal away from the tool.
        QCOMPARE(::getsid(static_cast<pid_t>(pid)), static_cast<pid_t>(pid));
        run.launcher->suspend();
        run.launcher->suspend();
        QTRY_COMPARE(processState(pid), 'T');
        run.launcher->resume();
        QTRY_COMPARE(processState(pid), 'S');
        Run other({tool, u"hang"_s});
        QVERIFY(run.launcher->uid() != other.launcher->uid());
        TaskBroadcast::instance().post(u"fabPauseTasks"_s, run.launcher->uid());
        TaskBroadcast::instance().post(u"fabKillTasks"_s, run.launcher->uid());
        run.launcher->tasklauncherTerminate();
        run.launcher->suspend();
        QCOMPARE(other.log, QStringList());
        QCOMPARE(run.log, (QStringList{u"chunk"_s, u"suspend"_s, u"resume"_s, u"suspend"_s,
                                       u"resume"_s, killedEnd}));
        QTRY_COMPARE(processState(pid), '-');
    }

    void terminateInsideACallback()
    {
        Run run({tool, u"endless"_s});
        run.isTerminatedByFirstChunk = true;
        QTRY_VERIFY(run.isEnded());
        QCOMPARE(run.log, (QStringList{u"chunk"_s, killedEnd}));
    }

    void destructionKillsSilently()
    {
        Run run({tool, u"hang"_s});
        QTRY_VERIFY(!run.bytes.isEmpty());
        run.launcher.reset();
        QCOMPARE(processState(run.bytes.toLongLong()), '-');
        QCOMPARE(run.log, QStringList{u"chunk"_s});
    }

    void childrenDieWithUs()
    {
        QProcess host;
        host.start(tool, {u"host"_s});
        QVERIFY(host.waitForReadyRead());
        const qint64 grandchild = host.readAll().toLongLong();
        QVERIFY(processState(grandchild) != '-');
        host.kill();
        QVERIFY(host.waitForFinished());
        // Whoever inherits the dead may be slow to collect them.
        QTRY_VERIFY("-Z"_ba.contains(processState(grandchild)));
    }
};

QTEST_GUILESS_MAIN(TestTaskLauncher)
#include "test_taskLauncher.moc"
