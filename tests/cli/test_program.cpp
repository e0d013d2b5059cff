#include "cli/programRun.h"
#include "support/folderListing.h"

#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QJsonArray>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace vignar;

/// The program as scripts see it: JSON lines, exit statuses, what it leaves behind.
class TestProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { m_out = std::make_unique<QTemporaryDir>(); }
    void cleanup();

    void makesSheetsAndTellsOfTheRest();
    void keepsAnExistingSheetWithoutATerminal();
    void planIsWhatIsExtracted();
    void analysePrintsTheRecord();
    void interruptLeavesNothing();
    void vanishedRowIsToldAsItWasAsked();
    void wrongArgumentsAndMissingDestination();
    void tellsWhatCannotBeMadeBeforeItIsBegun_data();
    void tellsWhatCannotBeMadeBeforeItIsBegun();
    void tellsOfAnotherInterval();
    void lostResultsAreAFailure_data();
    void lostResultsAreAFailure();

private:
    /// With one key picture: takes a while by plain passes, each of which decodes it.
    QString longClip() const;

    QTemporaryDir m_clips;
    std::unique_ptr<QTemporaryDir> m_out;
    QString m_clip;
};

void TestProgram::initTestCase()
{
    m_clip = m_clips.filePath(u"$(touch pwned) %s \"été\".mp4"_s);
    QCOMPARE(QProcess::execute(u"ffmpeg"_s,
                               {u"-loglevel"_s, u"error"_s, u"-f"_s, u"lavfi"_s, u"-i"_s,
                                u"testsrc2=s=320x240:r=10:d=30"_s, u"-g"_s, u"10"_s, m_clip}),
             0);
    QFile text(m_clips.filePath(u"text.mp4"_s));
    QVERIFY(text.open(QIODevice::WriteOnly) && text.write("no movie") > 0);
}

void TestProgram::cleanup()
{
    QVERIFY(filesUnder(QDir::tempPath()).filter(u"org.vignar"_s).isEmpty());
    QVERIFY(!QFile::exists(u"pwned"_s));
}

void TestProgram::makesSheetsAndTellsOfTheRest()
{
    const ProgramRun run = runVignar({u"sheet"_s, u"--json"_s, u"-o"_s, m_out->path(), u"-l"_s,
                                      u"min"_s, u"--set"_s, u"prefComputerWidthAuto=0"_s,
                                      u"--set"_s, u"prefComputerWidth=640"_s, m_clips.path()});
    QCOMPARE(run.status, 1);
    QCOMPARE(run.lines.size(), 2);
    QCOMPARE(run.lines[1][u"status"_s], u"refused"_s);
    QVERIFY(run.errors.contains(u"text.mp4: "_s));
    const QJsonObject made = run.lines[0];
    QCOMPARE(made[u"status"_s], u"made"_s);
    QCOMPARE(made[u"source"_s], m_clip);
    QCOMPARE(made[u"thumbnails"_s], 12);
    QCOMPARE(QImageReader(made[u"sheet"_s].toString()).size().width(), 640);
    QCOMPARE(filesUnder(m_out->path()).size(), 2);
}

void TestProgram::keepsAnExistingSheetWithoutATerminal()
{
    const QStringList arguments{u"sheet"_s, u"--json"_s, u"-o"_s, m_out->path(),
                                u"-f"_s,    u"pdf"_s,    m_clip};
    const ProgramRun first = runVignar(arguments);
    QCOMPARE(first.status, 0);
    QFile sheet(first.lines.value(0)[u"sheet"_s].toString());
    QVERIFY(sheet.fileName().endsWith(u".pdf"_s) && sheet.open(QIODevice::ReadOnly));
    const QByteArray before = sheet.readAll();
    QVERIFY(before.startsWith("%PDF"));
    const ProgramRun second = runVignar(arguments);
    QCOMPARE(second.status, 0);
    QCOMPARE(second.lines.value(0)[u"status"_s], u"kept"_s);
    QVERIFY(sheet.seek(0));
    QCOMPARE(sheet.readAll(), before);
    QCOMPARE(runVignar(arguments + QStringList{u"--existing"_s, u"replace"_s})
                 .lines.value(0)[u"status"_s],
             u"made"_s);
}

void TestProgram::planIsWhatIsExtracted()
{
    const ProgramRun run =
        runVignar({u"plan"_s, u"--json"_s, u"-o"_s, m_out->path(), u"-l"_s, u"med"_s, m_clip});
    QCOMPARE(run.status, 0);
    const QJsonObject plan = run.lines.value(0);
    QCOMPARE(plan[u"columns"_s], 3);
    QCOMPARE(plan[u"thumbnails"_s], 3);
    QCOMPARE(plan[u"instants"_s], (QJsonArray{2.5, 10.0, 20.0}));
    const QJsonArray pass = plan[u"passes"_s].toArray().at(2).toArray();
    QCOMPARE(pass.at(2), u"20.00"_s);
    QCOMPARE(pass.at(6), m_clip);
    QVERIFY(pass.last().toString().startsWith(m_out->path()));
    QVERIFY(filesUnder(m_out->path()).isEmpty());
}

void TestProgram::analysePrintsTheRecord()
{
    const ProgramRun run = runVignar({u"analyse"_s, u"--json"_s, m_clip});
    QCOMPARE(run.status, 0);
    QCOMPARE(run.lines.value(0)[u"status"_s], u"analysed"_s);
    const QJsonObject record = run.lines.value(0)[u"record"_s].toObject();
    QCOMPARE(record[u"v0_width"_s], 320);
    QCOMPARE(record[u"w_duration"_s], 30);
    QVERIFY(!record.contains(u"intraFailure"_s));
}

QString TestProgram::longClip() const
{
    const QString clip = QDir(m_clips.path()).filePath(u"../long.mp4"_s);
    const QStringList arguments{u"-loglevel"_s,
                                u"error"_s,
                                u"-y"_s,
                                u"-f"_s,
                                u"lavfi"_s,
                                u"-i"_s,
                                u"testsrc2=s=640x360:r=25:d=60"_s,
                                u"-preset"_s,
                                u"ultrafast"_s,
                                u"-g"_s,
                                u"9999"_s,
                                clip};
    const bool isMade = QFile::exists(clip) || QProcess::execute(u"ffmpeg"_s, arguments) == 0;
    return isMade ? clip : QString();
}

void TestProgram::interruptLeavesNothing()
{
    const QString clip = longClip();
    QProcess process;
    process.start(QStringLiteral(VIGNAR_CLI), {u"sheet"_s, u"-o"_s, m_out->path(), u"-l"_s,
                                               u"min"_s, u"--set"_s, u"prefPlainPasses=1"_s, clip});
    QTRY_VERIFY_WITH_TIMEOUT(!filesUnder(QDir::tempPath()).filter(u"img00.jpg"_s).isEmpty(),
                             patience);
    QCOMPARE(::kill(pid_t(process.processId()), SIGINT), 0);
    QCOMPARE(finished(process).status, 130);
    QVERIFY(filesUnder(m_out->path()).isEmpty());
}

void TestProgram::vanishedRowIsToldAsItWasAsked()
{
    const QString gone = m_out->filePath(u"gone.mp4"_s);
    QVERIFY(QFile::copy(m_clip, gone));
    QProcess process;
    process.start(QStringLiteral(VIGNAR_CLI),
                  {u"sheet"_s, u"--json"_s, u"--jobs"_s, u"1"_s, u"-o"_s, m_out->path(), u"-l"_s,
                   u"big"_s, u"-f"_s, u"pdf"_s, u"--set"_s, u"prefPlainPasses=1"_s, longClip(),
                   gone});
    // By the time of the first picture both sources have become rows.
    QTRY_VERIFY_WITH_TIMEOUT(!filesUnder(QDir::tempPath()).filter(u"img00.jpg"_s).isEmpty(),
                             patience);
    QVERIFY(QFile::remove(gone));
    const ProgramRun run = finished(process);
    QCOMPARE(run.status, 1);
    QCOMPARE(run.lines.size(), 2);
    QCOMPARE(run.lines[0][u"status"_s], u"made"_s);
    QCOMPARE(run.lines[1][u"source"_s], gone);
    QCOMPARE(run.lines[1][u"status"_s], u"failed"_s);
    QCOMPARE(run.errors.count(gone + u": "_s), 1);
    for (const QJsonObject &line : run.lines) {
        QCOMPARE(line[u"layout"_s], u"big"_s);
        QCOMPARE(line[u"format"_s], u"pdf"_s);
    }
}

void TestProgram::wrongArgumentsAndMissingDestination()
{
    QCOMPARE(runVignar({u"sheet"_s, u"-l"_s, u"huge"_s, m_clip}).status, 2);
    QCOMPARE(runVignar({u"--prefs"_s, u"/no/such/file"_s, u"sheet"_s, m_clip}).status, 2);
    QCOMPARE(runVignar({u"--version"_s}).status, 0);
    const QString missing = m_out->filePath(u"missing"_s);
    const ProgramRun run = runVignar({u"sheet"_s, u"--json"_s, u"-o"_s, missing, m_clip});
    QCOMPARE(run.status, 1);
    QCOMPARE(run.lines.value(0)[u"status"_s], u"failed"_s);
    QVERIFY(!QFile::exists(missing));
    // The key's range comes before anything is begun.
    const ProgramRun outside = runVignar(
        {u"sheet"_s, u"-o"_s, m_out->path(), u"--set"_s, u"prefComputerWidth=60000"_s, m_clip});
    QCOMPARE(outside.status, 2);
    QCOMPARE(outside.errors.count(u"prefComputerWidth must be"_s), 1);
    QVERIFY(filesUnder(m_out->path()).isEmpty());
}

void TestProgram::tellsWhatCannotBeMadeBeforeItIsBegun_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("layout");
    QTest::addColumn<QString>("reason");
    QTest::newRow("not a row of the layout")
        << u"-l min --thumbs 4"_s << u"min"_s << u"does not fill one row"_s;
    QTest::newRow("too large")
        << u"-l big --thumbs 600 --set prefComputerWidthAuto=0 --set prefComputerWidth=7680"_s
        << u"big"_s << u"7680 × "_s;
    QTest::newRow("not a video") << u"-l med"_s << u"med"_s << u"no decoder"_s;
}

void TestProgram::tellsWhatCannotBeMadeBeforeItIsBegun()
{
    QFETCH(QString, options);
    QFETCH(QString, layout);
    QFETCH(QString, reason);
    const QString source = reason == u"no decoder" ? m_clips.filePath(u"text.mp4"_s) : m_clip;
    const QStringList arguments = QStringList{u"--json"_s, u"-o"_s, m_out->path()} +
                                  options.split(u' ') +
                                  QStringList{u"--set"_s, u"prefSheetFormat=png"_s, source};
    for (const QStringList &command :
         {QStringList{u"plan"_s}, QStringList{u"sheet"_s, u"--jobs"_s, u"1"_s}}) {
        const ProgramRun run = runVignar(command + arguments);
        QCOMPARE(run.status, 1);
        QCOMPARE(run.lines.size(), 1);
        const QJsonObject told = run.lines[0];
        QVERIFY(told[u"reason"_s].toString().contains(reason));
        QCOMPARE(told[u"layout"_s], layout);
        QCOMPARE(told[u"source"_s], source);
        const bool isPlan = command[0] == u"plan";
        QCOMPARE(told[u"status"_s], isPlan || reason == u"no decoder" ? u"refused"_s : u"failed"_s);
        QVERIFY(isPlan || told[u"format"_s] == u"png"_s);
        QCOMPARE(run.errors.count(source + u": "_s), 1);
    }
    QVERIFY(filesUnder(m_out->path()).isEmpty());
}

void TestProgram::tellsOfAnotherInterval()
{
    const QStringList often{u"--json"_s, u"-o"_s,      m_out->path(), u"-l"_s,
                            u"min"_s,    u"--every"_s, u"2"_s,        m_clip};
    for (const QString &command : {u"plan"_s, u"sheet"_s}) {
        const ProgramRun run = runVignar(QStringList{command} + often);
        QCOMPARE(run.status, 0);
        QCOMPARE(run.lines.value(0)[u"thumbnails"_s], 12);
        QCOMPARE(run.lines.value(0)[u"interval"_s], 2.5);
        QCOMPARE(run.lines.value(0)[u"intervalAsked"_s], 2);
        QCOMPARE(run.errors.count(u"prefLimitMin"_s), 1);
    }
    const ProgramRun allowed = runVignar(QStringList{u"plan"_s, u"--thumbs"_s, u"30"_s} + often);
    QCOMPARE(allowed.lines.value(0)[u"interval"_s], 2);
    QVERIFY2(allowed.errors.isEmpty(), qPrintable(allowed.errors));
}

void TestProgram::lostResultsAreAFailure_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("output");
    for (const char *output : {"> /dev/full", ">&-", "| :"}) {
        QTest::addRow("sheet %s", output) << u"sheet --jobs 1"_s << QString::fromLatin1(output);
        QTest::addRow("analyse %s", output) << u"analyse --jobs 1"_s << QString::fromLatin1(output);
    }
    QTest::newRow("help") << u"--help"_s << u"> /dev/full"_s;
    QTest::newRow("version, closed") << u"--version"_s << u">&-"_s;
}

void TestProgram::lostResultsAreAFailure()
{
    QFETCH(QString, command);
    QFETCH(QString, output);
    const bool isSheet = command.startsWith(u"sheet");
    const QString options = isSheet ? u"-o \"$2\" \"$3\""_s : u"\"$3\""_s;
    QProcess shell;
    shell.start(u"bash"_s,
                {u"-c"_s, u"\"$1\" %1 %2 %3; exit ${PIPESTATUS[0]}"_s.arg(command, options, output),
                 u"bash"_s, QStringLiteral(VIGNAR_CLI), m_out->path(), m_clip});
    const ProgramRun run = finished(shell);
    QCOMPARE(run.status, 1);
    QCOMPARE(run.errors.count(u"standard output"_s), 1);
    // What was to be made is there all the same.
    QCOMPARE(filesUnder(m_out->path()).isEmpty(), !isSheet);
}

QTEST_GUILESS_MAIN(TestProgram)
#include "test_program.moc"
