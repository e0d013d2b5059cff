#include "app/progressReporter.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"
#include "support/logLines.h"
#include "support/recordingOutlets.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace vignar;
using namespace Qt::StringLiterals;

class TestProgress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsValues_data();
    void readsValues();
    void movesForwardOnly_data();
    void movesForwardOnly();
    void countsAtLeastASecond_data();
    void countsAtLeastASecond();
    void picksUpLoudness();
    void reportsPercentOfRun();
    void endsStuckAnalysis_data();
    void endsStuckAnalysis();
    void collectsWhatIsNotAscii();
    void endsOnceWhenToolIsMissing();
    void killsRunPastItsLimit();
    void tellsWhatWentWrong();

private:
    static RunRequest shell(const QString &script, int mode, RunnerKind kind, double maximum = 0)
    {
        return {{u"/bin/sh"_s, u"-c"_s, script}, maximum, mode, kind};
    }
};

void TestProgress::readsValues_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("value");
    QTest::newRow("clock time") << int(parseTime) << u"size= 1 time=01:02:03.50 bitrate=1"_s
                                << 3723.5;
    QTest::newRow("two parts are no time") << int(parseTime) << u"time=62:03.5 bitrate"_s << 0.0;
    QTest::newRow("time not available") << int(parseTime) << u"time=N/A bitrate"_s << 0.0;
    QTest::newRow("percentage") << int(parsePercentage) << u"pourcentage    : 42.5 %"_s << 42.5;
    QTest::newRow("batch") << int(parseBatch) << u"(batch 3/7)"_s << 3.0;
    QTest::newRow("no number behind the token")
        << int(parseProcessing) << u"Processing (x)"_s << 0.0;
    QTest::newRow("token absent") << int(parseBar) << u"nothing"_s << 0.0;
}

void TestProgress::readsValues()
{
    QFETCH(int, mode);
    QFETCH(QString, text);
    QFETCH(double, value);
    QCOMPARE(double(progressValue(text, progressToken(mode))), value);
}

void TestProgress::movesForwardOnly_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("maximum");
    QTest::addColumn<double>("previous");
    QTest::addColumn<int>("percent");
    QTest::newRow("half") << 100.0 << 200.0 << noPreviousValue << 50;
    QTest::newRow("same whole percent") << 50.4 << 100.0 << 50.1 << -1;
    QTest::newRow("back") << 40.0 << 100.0 << 50.0 << -1;
    QTest::newRow("99.5 waits for the end") << 99.5 << 100.0 << 98.0 << -1;
    QTest::newRow("99 is shown") << 99.0 << 100.0 << 98.0 << 99;
    QTest::newRow("no maximum") << 10.0 << 0.0 << noPreviousValue << -1;
    QTest::newRow("no value") << -1.0 << 100.0 << noPreviousValue << -1;
}

void TestProgress::movesForwardOnly()
{
    QFETCH(double, value);
    QFETCH(double, maximum);
    QFETCH(double, previous);
    QFETCH(int, percent);
    QCOMPARE(percentToShow(value, maximum, previous).value_or(-1), percent);
}

void TestProgress::countsAtLeastASecond_data()
{
    QTest::addColumn<qint64>("milliseconds");
    QTest::addColumn<double>("speed");
    QTest::newRow("no time at all") << qint64(0) << 60.0;
    QTest::newRow("no whole second") << qint64(999) << 60.0;
    QTest::newRow("only whole seconds") << qint64(4999) << 15.0;
    QTest::newRow("slower than the source") << qint64(240'000) << 0.25;
}

void TestProgress::countsAtLeastASecond()
{
    QFETCH(qint64, milliseconds);
    QTEST(speedOf(60, milliseconds), "speed");
}

void TestProgress::picksUpLoudness()
{
    QVERIFY(maximumVolume(u"max_volume: -3.5 dB"_s).isNull());
    setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>());
    RecordingOutlets outlets;
    ProgressReporter reporter(outlets);
    QSignalSpy done(&reporter, &ProgressReporter::done);
    QVERIFY(reporter.tasklauncherStart(
        shell(u"echo '[Parsed_volumedetect_0 @ 0x1] max_volume: -3.5 dB';"
              "printf '  Integrated loudness:\\n    I:       -23.1 LUFS\\n'"_s,
              parseNothing, RunnerKind::main)));
    QTRY_COMPARE(done.size(), 1);
    QCOMPARE(prefStored(RunKeys::processEncDico).value_or(Dico()),
             (Dico{{u"normalizedVolumedetect"_s, u"-3.5"_s}, {u"normalized"_s, u"-23.1"_s}}));
    setSharedPreferenceStore(nullptr);
}

void TestProgress::reportsPercentOfRun()
{
    RecordingOutlets outlets;
    ProgressReporter reporter(outlets);
    QSignalSpy done(&reporter, &ProgressReporter::done);
    QVERIFY(reporter.tasklauncherStart(
        shell(u"echo time=00:00:05.00 x; read -r _; echo"_s, parseTime, RunnerKind::main, 10)));
    QTRY_COMPARE(done.size(), 1);
    QCOMPARE(outlets.percents, QStringList{u"50 %"_s});
    QCOMPARE(outlets.mainValues, (QList<double>{0.01, 5.0}));
    QVERIFY(!reporter.isRunning(RunnerKind::main));
}

void TestProgress::endsStuckAnalysis_data()
{
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<int>("taken");
    const QString zero = u"frame=0 time=00:00:00.00 x"_s;
    QTest::newRow("from the start") << QStringList() << 10;
    QTest::newRow("after another report") << QStringList{u"time=00:00:01.00 x"_s} << 11;
    QTest::newRow("interrupted") << QStringList{zero, zero, zero, u"Press [q] to stop"_s} << 11;
}

void TestProgress::endsStuckAnalysis()
{
    QFETCH(QStringList, before);
    const QTemporaryDir folder;
    const QString gate = folder.filePath(u"gate"_s);
    QCOMPARE(mkfifo(gate.toLocal8Bit(), 0600), 0);
    const int pipe = open(gate.toLocal8Bit(), O_RDWR | O_CLOEXEC);
    QVERIFY(pipe >= 0);
    RecordingOutlets outlets;
    ProgressReporter reporter(outlets);
    QSignalSpy done(&reporter, &ProgressReporter::done);
    // Its answer to each line of ours is a chunk of its own.
    QVERIFY(reporter.tasklauncherStart(
        shell(filled(u"while read -r line; do echo \"$line\"; done <'%@'", gate), parseCollected,
              RunnerKind::analysis)));
    int chunks = 0;
    qsizetype length = 0;
    const auto isRead = [&](const QString &line) {
        const QByteArray bytes = line.toLocal8Bit() + '\n';
        if (write(pipe, bytes.constData(), bytes.size()) != bytes.size())
            return false;
        length += line.size() + 1;
        const bool hasCome =
            QTest::qWaitFor([&] { return reporter.analysisTaskVerboseMStr().size() == length; });
        // What a chunk has called for happens before the next one is written.
        QCoreApplication::sendPostedEvents();
        ++chunks;
        return hasCome;
    };
    for (const QString &line : before)
        QVERIFY(isRead(line));
    for (chunks = 0; reporter.isRunning(RunnerKind::analysis);)
        QVERIFY(chunks < 30 && isRead(u"frame=0 time=00:00:00.00 x"_s));
    QTRY_COMPARE(done.size(), 1);
    ::close(pipe);
    QCOMPARE(reporter.lastStatus(RunnerKind::analysis), taskLauncher::killedStatus);
    QTEST(chunks, "taken");
}

void TestProgress::collectsWhatIsNotAscii()
{
    RecordingOutlets outlets;
    ProgressReporter reporter(outlets);
    QSignalSpy done(&reporter, &ProgressReporter::done);
    QVERIFY(reporter.tasklauncherStart(shell(u"printf 'title : Été à Œdo\\n'; printf 'x\\n' >&2"_s,
                                             parseCollected, RunnerKind::analysis)));
    QTRY_COMPARE(done.size(), 1);
    QVERIFY(reporter.analysisTaskVerboseMStr().contains(u"Été à Œdo"_s));
    QVERIFY(reporter.analysisTaskVerboseMStr().contains(u"x"_s));
}

void TestProgress::endsOnceWhenToolIsMissing()
{
    RecordingOutlets outlets;
    ProgressReporter reporter(outlets);
    QSignalSpy done(&reporter, &ProgressReporter::done);
    QVERIFY(reporter.tasklauncherStart(
        {{u"/no/such/tool"_s, u"x"_s}, 0, parseNothing, RunnerKind::main}));
    QCOMPARE(done.size(), 0);
    QTRY_COMPARE(done.size(), 1);
    QVERIFY(!reporter.tasklauncherStart({{}, 0, parseNothing, RunnerKind::main}));
}

void TestProgress::killsRunPastItsLimit()
{
    RecordingOutlets outlets;
    ProgressReporter reporter(outlets);
    reporter.setRunLimit(std::chrono::milliseconds(50));
    QSignalSpy done(&reporter, &ProgressReporter::done);
    QVERIFY(
        reporter.tasklauncherStart(shell(u"exec sleep 1000"_s, parseNothing, RunnerKind::main)));
    QTRY_COMPARE(done.size(), 1);
    QCOMPARE(reporter.lastStatus(RunnerKind::main), taskLauncher::killedStatus);
    QCOMPARE(reporter.lastFault(RunnerKind::main), RunFault::tookTooLong);
}

void TestProgress::tellsWhatWentWrong()
{
    RecordingOutlets outlets;
    ProgressReporter reporter(outlets);
    QSignalSpy done(&reporter, &ProgressReporter::done);
    const auto faultAfter = [&](const QString &script, std::chrono::milliseconds time) {
        RunRequest request = shell(script, parseNothing, RunnerKind::analysis);
        request.time = time;
        request.limits.openFiles = 20;
        done.clear();
        reporter.tasklauncherStart(request);
        const bool isKilled = script.contains(u"stopped by us");
        if (isKilled)
            reporter.tasklauncherTerminate(RunnerKind::analysis);
        const bool isDone = QTest::qWaitFor([&done] { return done.size() == 1; });
        return isDone ? reporter.lastFault(RunnerKind::analysis) : RunFault::listOfFiles;
    };
    const std::chrono::minutes ample(5);
    QCOMPARE(faultAfter(u"exec sleep 1000"_s, std::chrono::milliseconds(50)),
             RunFault::tookTooLong);
    QCOMPARE(faultAfter(u"kill -KILL $$"_s, ample), RunFault::killed);
    QCOMPARE(faultAfter(u"echo '/x.mov: Cannot allocate memory' >&2; exit 1"_s, ample),
             RunFault::neededMemory);
    QCOMPARE(faultAfter(u"exec sleep 1000 # stopped by us"_s, ample), RunFault::none);
    // The limits reach the tool.
    QCOMPARE(faultAfter(u"test $(ulimit -n) = 20 || kill -KILL $$"_s, ample), RunFault::none);
}

QTEST_GUILESS_MAIN(TestProgress)
#include "test_progress.moc"
