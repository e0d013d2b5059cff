#include "settings/applicationPlaces.h"
#include "settings/logFiles.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

QByteArray log(const QString &name)
{
    QFile file(applicationPlaces().logFolder() + u'/' + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// One running program of the given kind.
class Writer : public QProcess
{
public:
    Writer(const QString &kind, const QString &line)
    {
        setProcessChannelMode(MergedChannels);
        start(QStringLiteral(VIGNAR_LOG_WRITER), {kind, line});
    }
    ~Writer() override { end(); }

    bool hasWritten() { return canReadLine() || (waitForReadyRead() && hasWritten()); }

    /// Everything that it wrote to its terminal.
    QByteArray end()
    {
        closeWriteChannel();
        waitForFinished();
        return readAll();
    }
};

} // namespace

class LogFilesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QDir(applicationPlaces().logFolder()).removeRecursively(); }

    void eachLaunchKeepsTheLogsOfTheLast()
    {
        for (const QString &kind : {u"desktop"_s, u"commandLine"_s}) {
            for (const QString &line : {u"oldest"_s, u"first"_s, u"second"_s})
                Writer(kind, line).end();
            const QString folder = applicationPlaces().logFolder();
            constexpr auto others = QFile::Permissions(0x0077);
            QVERIFY(!(QFile::permissions(folder) & others));
            for (const QString &name : {u"Details.log"_s, u"Resume.log"_s}) {
                QVERIFY(!(QFile::permissions(folder + u'/' + name) & others));
                QVERIFY(log(name).contains("second") && !log(name).contains("first"));
                const QByteArray previous = log(u"Previous-"_s + name);
                QVERIFY(previous.contains("first") && !previous.contains("oldest"));
                QCOMPARE(log(name).lastIndexOf("\xEF\xBB\xBF"), 0);
            }
        }
        QVERIFY(log(u"Resume.log"_s).startsWith("\xEF\xBB\xBFstart date    : 2"));
    }

    void theDesktopProgramWritesEverythingToItsLog()
    {
        QCOMPARE(Writer(u"desktop"_s, u"a line"_s).end(), "redirectStdoutToFile…\n");
        QCOMPARE(log(u"Details.log"_s),
                 "\xEF\xBB\xBFif (newStdout || newStderr)\na line\nprinted\n");
    }

    void commandLinesAtOnceShareTheLogs()
    {
        Writer first(u"commandLine"_s, u"first"_s);
        QVERIFY(first.hasWritten());
        Writer second(u"commandLine"_s, u"second"_s);
        QVERIFY(second.hasWritten());
        QCOMPARE(first.end(), "printed\n");
        Writer(u"commandLine"_s, u"third"_s).end();
        QCOMPARE(log(u"Details.log"_s).mid(3), "first\nsecond\nthird\n");
        QVERIFY(log(u"Previous-Details.log"_s).isEmpty());
        second.end();
        Writer(u"commandLine"_s, u"fourth"_s).end();
        QVERIFY(!log(u"Details.log"_s).contains("third"));
    }

    void aLogThatCannotBeMadeStopsNothing()
    {
        QFile inTheWay(applicationPlaces().logFolder());
        QDir().mkpath(QFileInfo(inTheWay).path());
        QVERIFY(inTheWay.open(QIODevice::WriteOnly));
        const QByteArray terminal = Writer(u"desktop"_s, u"a line"_s).end();
        for (const char *line : {"Impossible to create destination file !", "a line", "printed"})
            QVERIFY2(terminal.contains(line), line);
        inTheWay.remove();
    }

    void textIsAppended()
    {
        QVERIFY(QDir().mkpath(applicationPlaces().logFolder()));
        const QString path = applicationPlaces().logFolder() + u"/été.txt"_s;
        QCOMPARE(appendTextToFile(path, {}, true) + summaryLogAppend({}), 0);
        QVERIFY(!QFile::exists(path) && QFile::exists(summaryLogPath()));
        QCOMPARE(appendTextToFile(path, u"é"_s, true), 1);
        QCOMPARE(appendTextToFile(path, u"%@ "_s + QChar(0xD800), true), 1);
        QCOMPARE(log(u"été.txt"_s), QByteArray("\xEF\xBB\xBFé%@ ?"));
    }

    void placesFollowTheEnvironment()
    {
        qputenv("XDG_STATE_HOME", "/var/state/");
        QCOMPARE(makeLinuxPlaces(u"cli"_s)->logFolder(), u"/var/state/Vignar/cli"_s);
        qputenv("XDG_STATE_HOME", "relative");
        QCOMPARE(makeLinuxPlaces()->logFolder(), QDir::homePath() + u"/.local/state/Vignar"_s);
    }
};

QTEST_GUILESS_MAIN(LogFilesTest)
#include "test_logFiles.moc"
