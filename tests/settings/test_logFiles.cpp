#include "capturedLog.h"

#include "settings/applicationPlaces.h"
#include "settings/logFiles.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray log(const QString &name)
{
    return contentOf(applicationPlaces().logFolder() + u'/' + name);
}

/// One running program of the given kind.
class Writer
{
public:
    Writer(const QString &kind, const QString &line)
    {
        m_process.start(QStringLiteral(VIGNAR_LOG_WRITER), {kind, line});
    }
    ~Writer() { end(); }

    bool waitForTerminal(const QByteArray &text)
    {
        while (!m_terminal.contains(text) && m_process.waitForReadyRead())
            m_terminal += m_process.readAllStandardOutput();
        return m_terminal.contains(text);
    }

    /// Everything that it wrote to its terminal.
    QByteArray end()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished();
        m_terminal += m_process.readAllStandardOutput() + m_process.readAllStandardError();
        return m_terminal;
    }

private:
    QProcess m_process;
    QByteArray m_terminal;
};

} // namespace

class LogFilesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QDir(applicationPlaces().logFolder()).removeRecursively(); }

    void eachLaunchKeepsTheLogsOfTheLast_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("desktop program") << u"desktop"_s;
        QTest::newRow("command line") << u"commandLine"_s;
    }

    void eachLaunchKeepsTheLogsOfTheLast()
    {
        QFETCH(QString, kind);
        for (const QString &line : {u"oldest"_s, u"first"_s, u"second"_s})
            Writer(kind, line).end();
        for (const QString &name : {u"Details.log"_s, u"Resume.log"_s}) {
            QVERIFY(log(name).contains("second"));
            QVERIFY(!log(name).contains("first"));
            QVERIFY(log(u"Previous-"_s + name).contains("first"));
            QVERIFY(!log(u"Previous-"_s + name).contains("oldest"));
            QVERIFY(log(name).startsWith("\xEF\xBB\xBF"));
            QCOMPARE(log(name).count("\xEF\xBB\xBF"), 1);
        }
        QVERIFY(log(u"Resume.log"_s).startsWith("\xEF\xBB\xBFstart date    : 2"));
    }

    void theDesktopProgramWritesEverythingToItsLog()
    {
        const QByteArray terminal = Writer(u"desktop"_s, u"a line"_s).end();
        QCOMPARE(terminal, "redirectStdoutToFile…\n");
        QCOMPARE(log(u"Details.log"_s),
                 "\xEF\xBB\xBFif (newStdout || newStderr)\na line\nprinted\n");
    }

    void commandLinesAtOnceShareTheLogs()
    {
        Writer first(u"commandLine"_s, u"first"_s);
        QVERIFY(first.waitForTerminal("printed"));
        Writer second(u"commandLine"_s, u"second"_s);
        QVERIFY(second.waitForTerminal("printed"));
        QCOMPARE(first.end(), "printed\n");
        Writer(u"commandLine"_s, u"third"_s).end();
        QCOMPARE(log(u"Details.log"_s), "\xEF\xBB\xBF"
                                        "first\nsecond\nthird\n");
        QVERIFY(log(u"Previous-Details.log"_s).isEmpty());
        second.end();
        Writer(u"commandLine"_s, u"fourth"_s).end();
        QVERIFY(!log(u"Details.log"_s).contains("third"));
    }

    void aLogThatCannotBeMadeStopsNothing()
    {
        QDir().mkpath(QFileInfo(applicationPlaces().logFolder()).path());
        QFile inTheWay(applicationPlaces().logFolder());
        QVERIFY(inTheWay.open(QIODevice::WriteOnly));
        const QByteArray terminal = Writer(u"desktop"_s, u"a line"_s).end();
        QVERIFY(terminal.startsWith("printed\n"));
        QVERIFY(terminal.contains("Impossible to create destination file !\n"));
        QVERIFY(terminal.contains("a line\n"));
        inTheWay.remove();
    }

    void textIsAppended()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"été.txt"_s);
        QCOMPARE(appendTextToFile(path, {}, true), 0);
        QCOMPARE(appendTextToFile({}, u"a"_s, true), 0);
        QVERIFY(!QFile::exists(path));
        QCOMPARE(appendTextToFile(path, u"é"_s, true), 1);
        QCOMPARE(appendTextToFile(path, u"%@ "_s + QChar(0xD800), true), 1);
        QCOMPARE(contentOf(path), QByteArray("\xEF\xBB\xBFé%@ ?"));
        QCOMPARE(appendTextToFile(folder.path(), u"a"_s, false), 0);
    }

    void aNullTextOnlyCreatesTheSummary()
    {
        QDir().mkpath(applicationPlaces().logFolder());
        QCOMPARE(summaryLogAppend({}), 0);
        const QByteArray created = contentOf(summaryLogPath());
        QVERIFY(!created.endsWith('\n'));
        QCOMPARE(summaryLogAppend({}), 0);
        QCOMPARE(contentOf(summaryLogPath()), created);
    }

    void placesFollowTheEnvironment()
    {
        const QByteArray before = qgetenv("XDG_STATE_HOME");
        qputenv("XDG_STATE_HOME", "/var/state/");
        QCOMPARE(makeLinuxPlaces(u"cli"_s)->logFolder(), u"/var/state/Vignar/cli"_s);
        qputenv("XDG_STATE_HOME", "relative");
        QCOMPARE(makeLinuxPlaces()->logFolder(), QDir::homePath() + u"/.local/state/Vignar"_s);
        qputenv("XDG_STATE_HOME", before);
    }
};

QTEST_GUILESS_MAIN(LogFilesTest)
#include "test_logFiles.moc"
