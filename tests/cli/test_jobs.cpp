#include "cli/programRun.h"
#include "support/folderListing.h"
#include "support/makeClip.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The largest difference of two pictures in any colour of any pixel; 256 where the sizes
/// differ.
int largestDifference(const QString &one, const QString &other)
{
    const QImage first = QImage(one).convertToFormat(QImage::Format_RGB888);
    const QImage second = QImage(other).convertToFormat(QImage::Format_RGB888);
    if (first.isNull() || first.size() != second.size())
        return 256;
    int largest = 0;
    for (int row = 0; row < first.height(); ++row) {
        for (int byte = 0; byte < 3 * first.width(); ++byte)
            largest = std::max(largest, std::abs(first.constScanLine(row)[byte] -
                                                 second.constScanLine(row)[byte]));
    }
    return largest;
}

/// The processes whose arguments hold the text, our own aside.
QList<pid_t> processesNaming(const QString &text)
{
    QList<pid_t> found;
    for (const QString &entry : QDir(u"/proc"_s).entryList({u"[0-9]*"_s}, QDir::Dirs)) {
        const bool isNamed =
            contents(u"/proc/%1/cmdline"_s.arg(entry)).contains(text.toLocal8Bit());
        if (isNamed && entry.toInt() != ::getpid())
            found.append(entry.toInt());
    }
    return found;
}

/// The process that has started the ffmpeg that works on the source; 0: none does.
pid_t workerOn(const QString &source)
{
    for (const pid_t process : processesNaming(source)) {
        const QByteArray status = contents(u"/proc/%1/stat"_s.arg(process));
        // "12 (ffmpeg) R 11 …"
        if (status.contains("(ffmpeg)"))
            return status.mid(status.lastIndexOf(')') + 2).split(' ').value(1).toInt();
    }
    return 0;
}

/// A terminal without anybody at it but the test.
class Terminal
{
public:
    Terminal() : m_ours(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
    {
        ::grantpt(m_ours);
        ::unlockpt(m_ours);
    }
    ~Terminal() { ::close(m_ours); }
    Q_DISABLE_COPY_MOVE(Terminal)

    QString path() const { return QString::fromLocal8Bit(::ptsname(m_ours)); }
    const QByteArray &shown()
    {
        char bytes[4096];
        for (ssize_t length = 0; (length = ::read(m_ours, bytes, sizeof bytes)) > 0;)
            m_shown.append(bytes, length);
        return m_shown;
    }
    bool type(const QByteArray &text) { return ::write(m_ours, text, text.size()) == text.size(); }

private:
    int m_ours;
    QByteArray m_shown;
};

} // namespace

/// Several sources at once, as scripts and people see them.
class TestJobs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { m_out = std::make_unique<QTemporaryDir>(); }
    void cleanup();

    void tellsTheSameAsOneAfterAnother();
    void analysesTheSame();
    void aDeadWorkerCostsItsSource_data();
    void aDeadWorkerCostsItsSource();
    void endsWithItsWorkers_data();
    void endsWithItsWorkers();
    void asksOnceForAll();
    void twoProgramsMakeTwoSheets();
    void everySourceIsReportedWithoutADestination_data();
    void everySourceIsReportedWithoutADestination();

private:
    QStringList sheetArguments(const QString &jobs, const QString &destination,
                               const QStringList &sources) const;

    QTemporaryDir m_clips;
    std::unique_ptr<QTemporaryDir> m_out;
    /// Takes much longer than the others by plain passes: each decodes it from its start.
    QString m_long;
};

void TestJobs::initTestCase()
{
    m_long = m_clips.filePath(u"a/x.mp4"_s);
    QVERIFY(makeClip(m_long, u"testsrc2=s=640x360:r=25:d=30"_s,
                     {u"-preset"_s, u"ultrafast"_s, u"-g"_s, u"9999"_s}));
    QVERIFY(makeClip(m_clips.filePath(u"b/x.mp4"_s), u"testsrc2=s=320x240:r=10:d=12"_s));
    QVERIFY(makeClip(m_clips.filePath(u"c/x.mkv"_s), u"testsrc=s=320x240:r=10:d=12"_s));
    QVERIFY(makeClip(m_clips.filePath(u"c/y.mp4"_s), u"testsrc=s=320x180:r=10:d=12"_s));
    QFile text(m_clips.filePath(u"b/text.mp4"_s));
    QVERIFY(text.open(QIODevice::WriteOnly) && text.write("no movie") > 0);
}

void TestJobs::cleanup()
{
    QVERIFY(filesUnder(QDir::tempPath()).filter(u"org.vignar.Vignar-"_s).isEmpty());
}

QStringList TestJobs::sheetArguments(const QString &jobs, const QString &destination,
                                     const QStringList &sources) const
{
    return QStringList{u"sheet"_s,    u"--json"_s, u"--jobs"_s, jobs,
                       u"-o"_s,       destination, u"--set"_s,  u"prefMultimediaHd=0"_s,
                       u"--thumbs"_s, u"12"_s,     u"-l"_s,     u"min"_s} +
           sources;
}

void TestJobs::tellsTheSameAsOneAfterAnother()
{
    QStringList told[2];
    QStringList sheets[2];
    for (int run = 0; run < 2; ++run) {
        const QString out = m_out->filePath(QString::number(run));
        QVERIFY(QDir().mkpath(out));
        const ProgramRun program = runVignar(sheetArguments(
            run == 0 ? u"1"_s : u"4"_s, out, {u"--thumbs"_s, u"6"_s, m_clips.path()}));
        QCOMPARE(program.status, 1);
        QVERIFY(program.errors.contains(u"text.mp4: "_s));
        for (QJsonObject line : program.lines) {
            line.remove(u"seconds"_s);
            if (line[u"status"_s] == u"made"_s)
                sheets[run].append(line[u"sheet"_s].toString());
            told[run].append(
                QString::fromUtf8(QJsonDocument(line).toJson()).replace(out, u"out"_s));
        }
        told[run] += filesUnder(out);
    }
    QCOMPARE(told[0].size(), 5 + 4);
    QCOMPARE(told[1], told[0]);
    QCOMPARE(sheets[0].size(), 4);
    // The toolkit draws a letter a shade differently once it has drawn it elsewhere before,
    // so a sheet that is not the first of its process may differ by that, not by a picture.
    constexpr int shade = 24;
    for (qsizetype sheet = 0; sheet < sheets[0].size(); ++sheet)
        QVERIFY(largestDifference(sheets[0][sheet], sheets[1][sheet]) <= shade);
}

void TestJobs::analysesTheSame()
{
    const QStringList arguments{u"analyse"_s, u"--json"_s, m_clips.path()};
    const ProgramRun one = runVignar(arguments + QStringList{u"--jobs"_s, u"1"_s});
    const ProgramRun four = runVignar(arguments + QStringList{u"--jobs"_s, u"4"_s});
    QCOMPARE(one.lines.size(), 5);
    QCOMPARE(four.lines, one.lines);
    QCOMPARE(four.status, one.status);
}

void TestJobs::aDeadWorkerCostsItsSource_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("killed") << SIGKILL;
    QTest::newRow("told to end") << SIGTERM;
}

void TestJobs::aDeadWorkerCostsItsSource()
{
    QFETCH(int, signal);
    QProcess process;
    process.start(QStringLiteral(VIGNAR_CLI),
                  sheetArguments(u"2"_s, m_out->path(),
                                 {u"--set"_s, u"prefPlainPasses=1"_s, m_long,
                                  m_clips.filePath(u"b/x.mp4"_s), m_clips.filePath(u"c"_s)}));
    pid_t worker = 0;
    const auto isExtracting = [&] {
        worker = workerOn(m_long);
        return worker > 0 && !filesUnder(QDir::tempPath()).filter(u"img00.jpg"_s).isEmpty();
    };
    QVERIFY(QTest::qWaitFor(isExtracting, patience));
    QVERIFY(worker != process.processId());
    QCOMPARE(::kill(worker, signal), 0);
    const ProgramRun run = finished(process);
    QCOMPARE(run.status, 1);
    QStringList statuses;
    for (const QJsonObject &line : run.lines)
        statuses.append(line[u"status"_s].toString());
    QCOMPARE(statuses, (QStringList{u"failed"_s, u"made"_s, u"made"_s, u"made"_s}));
    QVERIFY(run.errors.contains(m_long + u": "_s + run.lines[0][u"reason"_s].toString()));
    QCOMPARE(filesUnder(m_out->path()).size(), 3);
    QVERIFY(processesNaming(m_clips.path()).isEmpty());
}

void TestJobs::endsWithItsWorkers_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("interrupted") << SIGINT;
    QTest::newRow("killed") << SIGKILL;
}

void TestJobs::endsWithItsWorkers()
{
    QFETCH(int, signal);
    const QString other = m_clips.filePath(u"other.mp4"_s);
    QVERIFY(QFile::exists(other) || QFile::copy(m_long, other));
    QProcess process;
    process.start(
        QStringLiteral(VIGNAR_CLI),
        sheetArguments(u"2"_s, m_out->path(), {u"--set"_s, u"prefPlainPasses=1"_s, m_long, other}));
    QTRY_COMPARE_WITH_TIMEOUT(filesUnder(QDir::tempPath()).filter(u"img00.jpg"_s).size(), 2,
                              patience);
    QCOMPARE(::kill(pid_t(process.processId()), signal), 0);
    const ProgramRun run = finished(process);
    QTRY_VERIFY_WITH_TIMEOUT(processesNaming(m_clips.path()).isEmpty(), patience);
    if (signal == SIGINT) {
        QCOMPARE(run.status, 130);
        QCOMPARE(run.lines.size(), 2);
        QVERIFY(filesUnder(m_out->path()).isEmpty());
    } else {
        QVERIFY(filesUnder(m_out->path()).isEmpty());
        // The next run removes the work folder.
        QCOMPARE(
            runVignar(sheetArguments(u"1"_s, m_out->path(), {m_clips.filePath(u"b"_s)})).status, 1);
    }
    QVERIFY(QFile::remove(other));
}

void TestJobs::asksOnceForAll()
{
    const QStringList sources{m_clips.filePath(u"b/x.mp4"_s), m_clips.filePath(u"c"_s)};
    QStringList sheets;
    for (const QJsonObject &line : runVignar(sheetArguments(u"1"_s, m_out->path(), sources)).lines)
        sheets.append(line[u"sheet"_s].toString());
    QCOMPARE(sheets.size(), 3);
    // The last one could be anybody's, the others say that they are ours.
    const QByteArray ours = "WEBVTT\n\nNOTE made by Vignar 0";
    for (const QString &sheet : sheets) {
        QFile old(sheet);
        QVERIFY(old.open(QIODevice::WriteOnly) && old.write(sheet == sheets[2] ? "old" : ours) > 0);
    }

    Terminal terminal;
    if (!QFile::exists(terminal.path()))
        QSKIP("no pseudo terminal can be had here");
    QProcess process;
    process.setStandardInputFile(terminal.path());
    process.setStandardErrorFile(terminal.path());
    process.start(QStringLiteral(VIGNAR_CLI), sheetArguments(u"3"_s, m_out->path(), sources));
    QTRY_VERIFY_WITH_TIMEOUT(terminal.shown().contains("[2!]"), patience);
    QVERIFY(terminal.shown().contains(QFileInfo(sheets[0]).fileName().toUtf8() + ": "));
    QVERIFY(terminal.type("2!\n"));
    const ProgramRun run = finished(process);
    QCOMPARE(run.status, 0);
    QCOMPARE(terminal.shown().count("[2!]"), 1);
    QVERIFY2(terminal.shown().contains("[2/3] "), "a line of progress for all of them");
    for (int index = 0; index < 2; ++index)
        QVERIFY(contents(sheets[index]) != ours);
    QCOMPARE(contents(sheets[2]), QByteArray("old"));
    QCOMPARE(run.lines[2][u"sheet"_s].toString(), m_out->filePath(u"y-2-index.jpg"_s));
}

void TestJobs::twoProgramsMakeTwoSheets()
{
    const QString other = m_clips.filePath(u"b/x.mp4"_s);
    QProcess first;
    first.start(
        QStringLiteral(VIGNAR_CLI),
        sheetArguments(u"1"_s, m_out->path(), {u"--set"_s, u"prefPlainPasses=1"_s, m_long}));
    // Pictures are taken once the name is settled.
    QVERIFY(QTest::qWaitFor(
        [&] {
            for (const pid_t process : processesNaming(m_long)) {
                if (contents(u"/proc/%1/cmdline"_s.arg(process)).contains("img0"))
                    return true;
            }
            return false;
        },
        patience));
    QCOMPARE(::kill(pid_t(first.processId()), SIGSTOP), 0);
    const ProgramRun second = runVignar(sheetArguments(u"1"_s, m_out->path(), {other}));
    QCOMPARE(::kill(pid_t(first.processId()), SIGCONT), 0);
    const ProgramRun held = finished(first);
    QCOMPARE(held.status + second.status, 0);
    const QString usual = m_out->filePath(u"x-index.jpg"_s);
    const QString numbered = m_out->filePath(u"x-2-index.jpg"_s);
    QCOMPARE(second.lines.value(0)[u"sheet"_s].toString(), usual);
    QCOMPARE(held.lines.value(0)[u"sheet"_s].toString(), numbered);
    QCOMPARE(held.lines.value(0)[u"status"_s].toString(), u"made"_s);
    QVERIFY(held.errors.contains(usual));
    QVERIFY(QImage(usual).height() > 0 && QImage(numbered).height() > 0);
}

void TestJobs::everySourceIsReportedWithoutADestination_data()
{
    QTest::addColumn<QString>("jobs");
    QTest::addColumn<bool>("isHomeUsed");
    for (const QString &jobs : {u"1"_s, u"2"_s}) {
        QTest::addRow("%s at once, vanished", qPrintable(jobs)) << jobs << false;
        QTest::addRow("%s at once, no home", qPrintable(jobs)) << jobs << true;
    }
}

void TestJobs::everySourceIsReportedWithoutADestination()
{
    QFETCH(const QString, jobs);
    QFETCH(const bool, isHomeUsed);
    const QStringList sources{m_clips.filePath(u"b/x.mp4"_s), m_clips.filePath(u"c/x.mkv"_s),
                              m_clips.filePath(u"c/y.mp4"_s)};
    const QString out = m_out->filePath(u"gone"_s);
    QVERIFY(QDir().mkdir(out));
    QProcess process;
    QStringList arguments = sheetArguments(jobs, out, sources);
    if (isHomeUsed) {
        // Below a file there can be no folder, for root neither.
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"HOME"_s, m_long);
        process.setProcessEnvironment(environment);
        arguments.remove(arguments.indexOf(u"-o"_s), 2);
    }
    process.start(QStringLiteral(VIGNAR_CLI), arguments);
    if (!isHomeUsed) {
        // The analysis of the first source is under way.
        QVERIFY(QTest::qWaitFor([&] { return workerOn(sources.first()) > 0; }, patience));
        QVERIFY(QDir(out).removeRecursively());
    }
    const ProgramRun run = finished(process);
    QCOMPARE(run.status, 1);
    QCOMPARE(run.lines.size(), 3);
    for (int index = 0; index < 3; ++index) {
        QCOMPARE(run.lines[index][u"source"_s].toString(), sources[index]);
        QCOMPARE(run.lines[index][u"status"_s].toString(), u"failed"_s);
        QCOMPARE(run.errors.count(sources[index] + u": "_s), 1);
    }
    QVERIFY(!QFile::exists(out) || isHomeUsed);
}

QTEST_GUILESS_MAIN(TestJobs)
#include "test_jobs.moc"
