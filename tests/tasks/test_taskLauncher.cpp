#include "tasks/taskLauncher.h"

#include "tasks/testPlaces.h"

#include <QTest>

#include <csignal>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace vignar;

static const QString yes = u"/usr/bin/yes"_s;
static const QString print = u"/usr/bin/printf"_s;
static const QStringList hanging{u"/bin/sh"_s, u"-c"_s, u"echo $$; exec sleep 600"_s};
static const QString killedEnd = u"end -7654312"_s;

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
};

/// The letter of /proc: 'S' asleep, 'T' stopped, 'Z' dead and not collected; '-' when gone.
static char processState(qint64 pid)
{
    QFile file(u"/proc/%1/stat"_s.arg(pid));
    const QByteArray line = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray(") -");
    return line.at(line.lastIndexOf(')') + 2);
}

class TestTaskLauncher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusedLaunches()
    {
        Run run;
        const auto refusal = [&run](const QString &line) {
            const QStringList arguments = line.split(u' ', Qt::SkipEmptyParts);
            return int(run.launcher->launchTasksWithArguments(arguments));
        };
        QCOMPARE(refusal({}), 1);
        QCOMPARE(refusal(u"| /bin/true"_s), 2);
        QCOMPARE(refusal(u"/bin/true | | /bin/true"_s), 2);
        for (const QString &line : {u"/bin/true |"_s, u"true"_s, u"/bin/true | /no/tool"_s})
            QCOMPARE(refusal(line), 3);
        run.launcher->tasklauncherTerminate();
        QCOMPARE(run.log, QStringList());
        QCOMPARE(run.launcher->launchTasksWithArguments({u"/bin/true"_s}), taskLauncher::launched);
        QTRY_COMPARE(run.log, QStringList{u"end 0"_s});
    }

    void endStatus()
    {
        const QString notExecutable = u"/etc/passwd"_s;
        const QList<std::pair<QStringList, int>> statuses{
            {{u"/bin/sh"_s, u"-c"_s, u"exit 7"_s}, 7},
            {{u"/bin/sh"_s, u"-c"_s, u"kill -TERM $$"_s}, 128 + SIGTERM},
            {{notExecutable}, 126},
            {{notExecutable, u"|"_s, u"/bin/cat"_s}, 126}};
        for (const auto &[arguments, status] : statuses) {
            Run run(arguments);
            QVERIFY(run.launcher->isRunning() && run.log.isEmpty());
            QTRY_COMPARE(run.log, QStringList{u"end %1"_s.arg(status)});
            QVERIFY(!run.launcher->isRunning());
        }
    }

    void whatAToolGetsAndGives()
    {
        const auto output = [](const QStringList &arguments) {
            Run run(arguments);
            const QStringList wholeRun{u"chunk"_s, u"end 0"_s};
            const bool isEnded = QTest::qWaitFor([&] { return run.log == wholeRun; });
            return isEnded ? run.bytes : "not ended"_ba;
        };
        // Arguments arrive as they stand, but for the home folder.
        QCOMPARE(output({print, u"%s,"_s, u"a b"_s, u"$(id)"_s, u"~/x"_s, u"~://x"_s}),
                 "a b,$(id)," + QDir::homePath().toUtf8() + "/x,~://x,");
        const QString speak = u"echo out; echo err >&2"_s;
        QCOMPARE(output({u"/bin/sh"_s, u"-c"_s, speak, u"|"_s, u"/bin/cat"_s}), "out\n");
        QCOMPARE(output({u"/bin/sh"_s, u"-c"_s, u"echo no >&2"_s}), "no\n");
        // All output comes before the end.
        QCOMPARE(output({yes, u"x"_s, u"|"_s, u"/usr/bin/head"_s, u"-c3000000"_s}),
                 "x\n"_ba.repeated(1500000));
        // A tool among the resources, with the tools' environment and no input.
        const TestPlaces places;
        QVERIFY(QDir(places.folder.path()).mkdir(u"resources"_s));
        QVERIFY(QFile::link(u"/bin/sh"_s, places.folder.filePath(u"resources/probe"_s)));
        QCOMPARE(output({u"probe"_s, u"-c"_s, u"cat; echo $LC_CTYPE"_s}), "en_US.UTF-8\n");
    }

    void asciiTextOrBytes()
    {
        Run text({print, u"café\\n"_s});
        QTRY_COMPARE(text.log, QStringList{u"end 0"_s});
        Run raw({print, u"café\\n"_s}, true);
        QTRY_COMPARE(raw.log, (QStringList{u"chunk"_s, u"end 0"_s}));
        QCOMPARE(raw.bytes, "caf\xC3\xA9\n");
    }

    void stageThatOutlivesTheLastIsKilled()
    {
        Run run(hanging + QStringList{u"|"_s, u"/usr/bin/head"_s, u"-n1"_s});
        QTRY_COMPARE(run.log, (QStringList{u"chunk"_s, u"end 0"_s}));
        QTRY_COMPARE(processState(run.bytes.toLongLong()), '-');
    }

    void suspendedRunIsKilledByBroadcast()
    {
        Run run(hanging);
        QTRY_VERIFY(!run.bytes.isEmpty());
        const qint64 pid = run.bytes.toLongLong();
        // A session of its own keeps a Ctrl-C on the terminal away from the tool.
        QCOMPARE(::getsid(static_cast<pid_t>(pid)), static_cast<pid_t>(pid));
        run.launcher->suspend();
        run.launcher->suspend();
        QTRY_COMPARE(processState(pid), 'T');
        run.launcher->resume();
        QTRY_COMPARE(processState(pid), 'S');
        Run other(hanging);
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
        Run run({yes});
        run.isTerminatedByFirstChunk = true;
        QTRY_COMPARE(run.log, (QStringList{u"chunk"_s, killedEnd}));
    }

    void destructionKillsSilently()
    {
        Run run(hanging);
        QTRY_VERIFY(!run.bytes.isEmpty());
        run.launcher.reset();
        QCOMPARE(processState(run.bytes.toLongLong()), '-');
        QCOMPARE(run.log, QStringList{u"chunk"_s});
    }

    void childrenDieWithUs()
    {
        QProcess host;
        host.start(QStringLiteral(OTHER_RUN), QStringList());
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
