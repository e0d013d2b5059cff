#include "cli/programRun.h"
#include "support/folderListing.h"
#include "support/makeClip.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <climits>
#include <filesystem>

#include <fcntl.h>
#include <pty.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace vignar;

namespace
{

/// Runs a shell script whose "$0" is the program.
ProgramRun runScript(const QString &script, const QStringList &arguments, QProcess &process)
{
    process.start(u"/bin/sh"_s,
                  QStringList{u"-c"_s, script, QStringLiteral(VIGNAR_CLI)} + arguments);
    return finished(process);
}

} // namespace

/// Files that can hardly be named: names that are no text or speak to terminals, folders that
/// cannot be read.
class TestNames : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();

    void namesThatAreNotUtf8GetSheets_data();
    void namesThatAreNotUtf8GetSheets();
    void namesThatAreNotUtf8AreTakenAsTyped_data();
    void namesThatAreNotUtf8AreTakenAsTyped();
    void foldersThatCannotBeReadAreNamed();
    void resultsStayOnOneLine();
    void terminalsAreNotSpokenTo_data();
    void terminalsAreNotSpokenTo();

private:
    bool link(const QByteArray &name) const;

    QTemporaryDir m_folder;
    QString m_clip;
    std::unique_ptr<QTemporaryDir> m_out;
};

void TestNames::initTestCase()
{
    m_clip = m_folder.filePath(u"clip.mp4"_s);
    QVERIFY(makeClip(m_clip, u"testsrc2=s=160x120:r=10:d=8"_s));
    const QByteArray folder = QFile::encodeName(m_folder.filePath(u"raw/"_s));
    QVERIFY(QDir(m_folder.path()).mkpath(u"raw"_s));
    QCOMPARE(::mkdir((folder + "\xe9t\xe9").constData(), 0700), 0);
    for (const char *name : {"raw/ok.mp4", "raw/caf\xe9.mp4", "raw/caf\xe8.mp4",
                             "raw/\xe9t\xe9/plain.mp4", "raw/notes\xe9.txt"})
        QVERIFY(link(name));
}

void TestNames::cleanupTestCase()
{
    // The folder's own removal does not see names that are not UTF-8.
    std::filesystem::remove_all(m_folder.path().toStdString());
}

void TestNames::init()
{
    m_out = std::make_unique<QTemporaryDir>();
}

/// A further name of the clip.
bool TestNames::link(const QByteArray &name) const
{
    const QByteArray path = QFile::encodeName(m_folder.path()) + '/' + name;
    return ::link(QFile::encodeName(m_clip).constData(), path.constData()) == 0;
}

void TestNames::namesThatAreNotUtf8GetSheets_data()
{
    QTest::addColumn<QString>("jobs");
    QTest::newRow("one after another") << u"1"_s;
    QTest::newRow("at once") << u"2"_s;
}

void TestNames::namesThatAreNotUtf8GetSheets()
{
    QFETCH(QString, jobs);
    const QTemporaryDir scratch;
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"TMPDIR"_s, scratch.path());
    environment.remove(u"XDG_RUNTIME_DIR"_s);
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(VIGNAR_CLI), {u"sheet"_s, u"--json"_s, u"--jobs"_s, jobs, u"-o"_s,
                                               m_out->path(), m_folder.filePath(u"raw"_s)});
    const ProgramRun run = finished(process);
    QVERIFY2(run.status == 0, qPrintable(run.errors));
    QStringList sources;
    QSet<QString> sheets;
    for (const QJsonObject &line : run.lines) {
        QCOMPARE(line.value("status"_L1).toString(), u"made"_s);
        sources.append(line.value("source"_L1).toString());
        sheets.insert(QFileInfo(line.value("sheet"_L1).toString()).fileName());
        QVERIFY(QFile::exists(line.value("sheet"_L1).toString()));
    }
    sources.sort();
    QStringList expected;
    for (const QString &name :
         {u"ok.mp4"_s, u"caf\ufffd.mp4"_s, u"caf\ufffd.mp4"_s, u"\ufffdt\ufffd/plain.mp4"_s})
        expected.append(m_folder.filePath(u"raw/"_s + name));
    expected.sort();
    QCOMPARE(sources, expected);
    QCOMPARE(sheets, (QSet<QString>{u"ok-index.jpg"_s, u"caf\ufffd-index.jpg"_s,
                                    u"caf\ufffd-2-index.jpg"_s, u"plain-index.jpg"_s}));
    QCOMPARE(filesUnder(scratch.path()), QStringList());
}

void TestNames::namesThatAreNotUtf8AreTakenAsTyped_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("source");
    const QString raw = u"raw/"_s;
    QTest::newRow("file") << u"cd \"$1\"; \"$0\" analyse --json \"$(printf 'caf\\351.mp4')\""_s << 0
                          << u"caf\ufffd.mp4"_s;
    QTest::newRow("folder") << u"\"$0\" analyse --json \"$1/$(printf '\\351t\\351')/\""_s << 0
                            << u"\ufffdt\ufffd/plain.mp4"_s;
    QTest::newRow("in its folder")
        << u"cd \"$1/$(printf '\\351t\\351')\"; \"$0\" analyse --json ./plain.mp4"_s << 0
        << u"\ufffdt\ufffd/plain.mp4"_s;
    QTest::newRow("link to one") << u"ln -sf \"raw/$(printf 'caf\\351.mp4')\" \"$1/../link.mp4\"; "
                                    "\"$0\" analyse --json \"$1/../link.mp4\""_s
                                 << 0 << u"caf\ufffd.mp4"_s;
    QTest::newRow("plan") << u"\"$0\" plan --json \"$1/$(printf 'caf\\351.mp4')\""_s << 0
                          << u"caf\ufffd.mp4"_s;
    QTest::newRow("missing") << u"\"$0\" analyse --json \"$1/$(printf 'no\\351.mp4')\""_s << 1
                             << u"no\ufffd.mp4"_s;
    QTest::newRow("as destination")
        << u"\"$0\" sheet --json -o \"$1/$(printf '\\351t\\351')\" \"$1/ok.mp4\""_s << 2
        << QString();
}

void TestNames::namesThatAreNotUtf8AreTakenAsTyped()
{
    QFETCH(QString, script);
    QFETCH(int, status);
    QFETCH(QString, source);
    QProcess process;
    const ProgramRun run = runScript(script, {m_folder.filePath(u"raw"_s)}, process);
    QCOMPARE(run.status, status);
    QCOMPARE(run.lines.size(), source.isNull() ? 0 : 1);
    if (source.isNull()) {
        QVERIFY2(run.errors.contains(
                     u"'%1' is not valid UTF-8"_s.arg(m_folder.filePath(u"raw/\ufffdt\ufffd"_s))),
                 qPrintable(run.errors));
        return;
    }
    QCOMPARE(run.lines.first().value("source"_L1).toString(),
             m_folder.filePath(u"raw/"_s + source));
    // Nobody is shown where the file's stand-in lies.
    const QJsonDocument whole(run.lines.first());
    QVERIFY2(!whole.toJson().contains("/names/"), whole.toJson().constData());
}

void TestNames::foldersThatCannotBeReadAreNamed()
{
    // Paths longer than the system allows stop everybody, the administrator included.
    const QTemporaryDir folder;
    QVERIFY(QFile::link(m_clip, folder.filePath(u"ok.mp4"_s)));
    const QByteArray name(250, 'x');
    int at = ::open(QFile::encodeName(folder.path()).constData(), O_RDONLY | O_DIRECTORY);
    for (qsizetype length = folder.path().size(); length + 251 < PATH_MAX; length += 251) {
        QCOMPARE(::mkdirat(at, name.constData(), 0700), 0);
        const int next = ::openat(at, name.constData(), O_RDONLY | O_DIRECTORY);
        ::close(at);
        at = next;
    }
    for (int count = 0; count < 25; ++count)
        QCOMPARE(::mkdirat(at, (QByteArray::number(count) + name.left(249)).constData(), 0700), 0);
    ::close(at);
    const ProgramRun run = runVignar({u"analyse"_s, u"--json"_s, folder.path()});
    QCOMPARE(QProcess::execute(u"rm"_s, {u"-r"_s, folder.path()}), 0);
    QCOMPARE(run.status, 1);
    QCOMPARE(run.lines.size(), 1);
    QCOMPARE(run.errors.count(u"it cannot be read (File name too long)\n"_s), 20);
    QVERIFY(run.errors.contains(u"and 5 more\n"_s));
}

void TestNames::resultsStayOnOneLine()
{
    QVERIFY(link("two\nlines\r.mp4"));
    QProcess process;
    process.start(QStringLiteral(VIGNAR_CLI),
                  {u"sheet"_s, u"-o"_s, m_out->path(), m_folder.filePath(u"two\nlines\r.mp4"_s)});
    QVERIFY(process.waitForFinished(patience));
    QCOMPARE(QString::fromUtf8(process.readAllStandardOutput()),
             m_out->filePath(u"two␊lines␍-index.jpg\n"_s));
}

void TestNames::terminalsAreNotSpokenTo_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::newRow("sheet") << QStringList{u"sheet"_s};
    QTest::newRow("sheet as JSON") << QStringList{u"sheet"_s, u"--json"_s};
    QTest::newRow("sheet in detail") << QStringList{u"sheet"_s, u"--verbose"_s};
    QTest::newRow("analyse") << QStringList{u"analyse"_s};
    QTest::newRow("plan") << QStringList{u"plan"_s};
}

void TestNames::terminalsAreNotSpokenTo()
{
    QFETCH(QStringList, command);
    const QString name = u"esc\x1b[2J\x1b]0;owned\x07\u202e\u009b.mp4"_s;
    link(name.toUtf8());
    int terminal = -1;
    int ours = -1;
    char device[64] = {};
    QCOMPARE(::openpty(&ours, &terminal, device, nullptr, nullptr), 0);
    ::fcntl(ours, F_SETFL, O_NONBLOCK);
    QProcess process;
    process.setStandardOutputFile(QString::fromLocal8Bit(device));
    if (command.first() == u"sheet")
        command << u"-o"_s << m_out->path();
    process.start(QStringLiteral(VIGNAR_CLI), command << m_folder.filePath(name));
    QByteArray shown;
    const auto read = [&] {
        char bytes[4096];
        for (ssize_t count = 0; (count = ::read(ours, bytes, sizeof bytes)) > 0;)
            shown.append(bytes, count);
    };
    while (!process.waitForFinished(50) && process.state() != QProcess::NotRunning)
        read();
    read();
    ::close(terminal);
    ::close(ours);
    QCOMPARE(process.exitCode(), 0);
    shown += process.readAllStandardError();
    QVERIFY(shown.contains("[2J"));
    const QString text = QString::fromUtf8(shown);
    for (const QChar character : {u'\x1b', u'\x07', u'\u202e', u'\u009b'})
        QVERIFY2(!text.contains(character), shown.constData());
}

QTEST_GUILESS_MAIN(TestNames)
#include "test_names.moc"
