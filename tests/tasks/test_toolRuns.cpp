#include "tasks/blockingRuns.h"
#include "tasks/ffmpegInputs.h"
#include "tasks/runFault.h"
#include "tasks/taskLauncher.h"
#include "tasks/testPlaces.h"
#include "tasks/toolPlaces.h"
#include "tasks/waitedRun.h"
#include "tasks/workFolder.h"

#include <QTest>

#include <csignal>
#include <functional>
#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace vignar;

/// Runs a shell text and answers what it prints.
using Way = std::function<QString(const QString &command)>;

struct Listener : TaskLauncherDelegate {
    QString text;
    bool hasEnded = false;
    void taskLauncherDidReceiveNewString(taskLauncher &, const QString &chunk) override
    {
        text += chunk;
    }
    void taskLauncherTaskDidEnd(taskLauncher &) override { hasEnded = true; }
};

static QString launched(const QString &command)
{
    Listener listener;
    taskLauncher launcher;
    launcher.setDelegate(&listener);
    launcher.launchTasksWithArguments({u"/bin/bash"_s, u"-c"_s, command});
    return QTest::qWaitFor([&] { return listener.hasEnded; }) ? listener.text : QString();
}

/// Of a shell text with limits of its own: what it prints, and how it ends.
static std::pair<QString, int> limited(const QString &command, const RunLimits &limits)
{
    QByteArray text;
    const WaitedEnd end =
        runAndWait({.stages = {{u"/bin/bash"_s, u"-c"_s, command}}, .limits = limits},
                   [&text](const QByteArray &chunk) { text += chunk; });
    return {QString::fromUtf8(text), end ? end.status : -1};
}

/// What every run of a tool gets, in each way of starting one.
class TestToolRuns : public QObject
{
    Q_OBJECT

    static void addWays()
    {
        QTest::addColumn<Way>("run");
        QTest::newRow("launcher") << Way(launched);
        QTest::newRow("taskArray") << Way([](const QString &command) {
            return taskArray({u"/bin/bash"_s, u"-c"_s, command});
        });
        QTest::newRow("taskWithStr") << Way([](const QString &command) {
            return taskWithStr(u"/bin/bash -c '%1'"_s.arg(command));
        });
        QTest::newRow("taskBloquante") << Way([](const QString &command) {
            return taskBloquante::verbose({u"exec /bin/bash -c \"$0\""_s, command});
        });
    }

private Q_SLOTS:
    void environment_data() { addWays(); }
    void environment()
    {
        QFETCH(Way, run);
        for (const char *name : {"AV_LOG_FORCE_COLOR", "FFREPORT", "LANG", "LC_NUMERIC", "LANGUAGE",
                                 "http_proxy", "AV_LOG_FORCE_256COLOR"})
            qputenv(name, "fr_FR.UTF-8");
        const QStringList entries = run(u"env"_s).split(u'\n');
        for (const QString &entry :
             {u"LC_ALL=C.UTF-8"_s, u"LC_CTYPE=en_US.UTF-8"_s, u"AV_LOG_FORCE_NOCOLOR=1"_s,
              u"PATH="_s + qEnvironmentVariable("PATH"), u"HOME="_s + qEnvironmentVariable("HOME")})
            QVERIFY2(entries.contains(entry), qPrintable(entry));
        QVERIFY(!entries.join(u' ').contains(u"fr_FR"));
    }

    void limitsAndRights_data() { addWays(); }
    void limitsAndRights()
    {
        QFETCH(Way, run);
        // What the program itself is under stays where it is lower.
        rlimit before{};
        QCOMPARE(::getrlimit(RLIMIT_NOFILE, &before), 0);
        const rlimit few{.rlim_cur = 48, .rlim_max = before.rlim_max};
        QCOMPARE(::setrlimit(RLIMIT_NOFILE, &few), 0);
        const QString text = run(u"cat /proc/self/limits /proc/self/status"_s).simplified();
        QCOMPARE(::setrlimit(RLIMIT_NOFILE, &before), 0);
        for (const QString &line :
             {u"Max cpu time 600 610 "_s, u"Max file size 2147483648 2147483648 "_s,
              u"Max core file size 0 0 "_s, u"Max open files 48 64 "_s, u"NoNewPrivs: 1 "_s,
              u"Seccomp: 2 "_s})
            QVERIFY2(text.contains(line), qPrintable(line + u" not in "_s + text));
#ifndef __SANITIZE_ADDRESS__
        QVERIFY(text.contains(u"Max data size 4294967296 4294967296 "));
        QVERIFY(text.contains(u"Max address space 5368709120 5368709120 "));
#endif
        // Not "Connection refused": there is not even a socket.
        const QString connecting = u"(exec 3<>/dev/tcp/127.0.0.1/9) 2>&1; echo gone on"_s;
        QVERIFY2(run(connecting).contains(u"Permission denied"), qPrintable(run(connecting)));
        QVERIFY(run(connecting).contains(u"gone on"));
    }

    void whatALimitDoes()
    {
        const TestPlaces places;
        const QString file = places.folder.filePath(u"large"_s);
        const auto [words, status] =
            limited(u"head -c 9000 /dev/zero >'%1'; echo end $?"_s.arg(file), {.fileSize = 4096});
        QVERIFY2(words.contains(u"File too large") && words.contains(u"end 1"), qPrintable(words));
        QCOMPARE(QFileInfo(file).size(), 4096);
        const auto [nothing, busy] =
            limited(u"while :; do :; done"_s, {.processorTime = std::chrono::seconds(1)});
        QCOMPARE(faultOf(busy, nothing), RunFault::tookTooLong);
#ifndef __SANITIZE_ADDRESS__
        const auto [memory, hungry] = limited(u"tail /dev/zero"_s, {.memory = 100 << 20});
        QVERIFY2(hungry == 1 && memory.contains(u"memory exhausted"), qPrintable(memory));
#endif
    }

    void faults_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("report");
        QTest::addColumn<RunFault>("fault");
        const auto row = [](const char *name, int status, const QString &report, RunFault fault) {
            QTest::newRow(name) << status << report << fault;
        };
        row("success", 0, u"Input #0, avi, from '/x: Cannot allocate memory':\n"_s, RunFault::none);
        row("ordinary failure", 1, u"/x.mp4: Invalid data found when processing input\n"_s,
            RunFault::none);
        row("status of its own", 255, u"x\n"_s, RunFault::none);
        row("no memory to open", 1, u"a\n/x.mov: Cannot allocate memory\n"_s,
            RunFault::neededMemory);
        row("no memory to decode", 0,
            u"Error while decoding stream #0:0: Cannot allocate memory\r\n"_s,
            RunFault::neededMemory);
        row("title", 1, u"    title           : Cannot allocate memory\n"_s, RunFault::none);
        row("killed", 128 + SIGKILL, u"Input #0\n"_s, RunFault::killed);
        row("crash", 128 + SIGSEGV, {}, RunFault::killed);
        row("asked to end", 255, u"x\nExiting normally, received signal 15.\n"_s, RunFault::killed);
        row("processor time", 128 + SIGXCPU, {}, RunFault::tookTooLong);
        row("processor time, caught", 255, u"x\nExiting normally, received signal 24.\n"_s,
            RunFault::tookTooLong);
        row("processor time, not heard", 123, u"Received > 3 system signals, hard exiting\n"_s,
            RunFault::tookTooLong);
        row("playlist", 1,
            u"x\n[hls @ 0x55ea279304c0] Format not on whitelist 'mov'\n/x: Invalid argument\n"_s,
            RunFault::listOfFiles);
        row("text", 1, u"[srt @ 0x55ea279304c0] Format not on whitelist 'mov'\n"_s, RunFault::none);
    }
    void faults()
    {
        QFETCH(int, status);
        QFETCH(QString, report);
        QTEST(faultOf(status, report), "fault");
    }

    void ffmpegIsKeptToItsSources()
    {
        const TestPlaces places;
        const QString tool = places.file(u"resources/tools/ffmpeg"_s, "#!/bin/sh\necho \"$@\"\n");
        QVERIFY(QFile::setPermissions(tool, QFile::Permissions(0x7700)));
        const QString lists = u" -format_whitelist "_s + sourceDemuxers();
        const QString alone = u"-protocol_whitelist file"_s + lists;
        const QString joined =
            u"-protocol_whitelist file,data -f concat -format_whitelist concat,"_s +
            sourceDemuxers();
        const QList<std::pair<QString, QString>> runs{
            {u"-version"_s, u"-version"_s},
            {u"-ss 1 -i /a -vf x /o"_s,
             u"-max_alloc 536870912 -ss 1 %1 -i /a -vf x /o"_s.arg(alone)},
            {u"-i /a -f null -f concat -i /b /o"_s,
             u"-max_alloc 536870912 %1 -i /a -f null -f concat %1 -i /b /o"_s.arg(alone)},
            {u"-protocol_whitelist file,data -f concat -i data:x -i /b /o"_s,
             u"-max_alloc 536870912 %1 -i data:x %2 -i /b /o"_s.arg(joined, alone)},
        };
        for (const auto &[planned, executed] : runs) {
            const QStringList arguments = QStringList(tool) + planned.split(u' ');
            QCOMPARE(taskArray(arguments).trimmed(), executed);
        }
        // Another tool's arguments stay as they are.
        QCOMPARE(taskArray({u"/bin/echo"_s, u"-i"_s, u"a"_s}), u"-i a\n"_s);
        for (const QString &name : {u"hls"_s, u"dash"_s, u"concat"_s, u"image2"_s, u"lavfi"_s,
                                    u"sdp"_s, u"imf"_s, u"vobsub"_s, u"ass"_s})
            QVERIFY(!sourceDemuxers().split(u',').contains(name));
    }
};

QTEST_GUILESS_MAIN(TestToolRuns)
#include "test_toolRuns.moc"
