#include "tasks/blockingRuns.h"

#include "tasks/childProcess.h"
#include "tasks/testPlaces.h"
#include "tasks/toolPlaces.h"
#include "tasks/waitedRun.h"
#include "tasks/workFolder.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace vignar;

static const QString tool = QStringLiteral(FAKE_TOOL);

class TestBlockingRuns : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void taskArrayText_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("text");
        const QString null;
        QTest::newRow("nothing") << QStringList() << null;
        QTest::newRow("empty stage") << QStringList{tool, u"|"_s, u"|"_s, tool} << null;
        QTest::newRow("missing tool") << QStringList{u"/no/tool"_s} << null;
        QTest::newRow("missing later tool") << QStringList{tool, u"|"_s, u"/no/tool"_s} << null;
        QTest::newRow("not executable") << QStringList{u"/etc/passwd"_s} << null;
        QTest::newRow("silent") << QStringList{tool} << null;
        QTest::newRow("blank") << QStringList{tool, u"args"_s, u" "_s} << null;
        QTest::newRow("untrimmed") << QStringList{tool, u"args"_s, u" "_s, u""_s} << u" \n\n"_s;
        QTest::newRow("errors of a failure")
            << QStringList{u"/bin/sh"_s, u"-c"_s, u"echo no >&2; exit 1"_s} << u"no\n"_s;
        QTest::newRow("Latin-1 beside UTF-8")
            << QStringList{u"/usr/bin/printf"_s, u"é.avi\n\\351\n"_s} << u"é.avi\né\n"_s;
        QTest::newRow("endless first stage")
            << QStringList{tool, u"endless"_s, u"|"_s, tool, u"args"_s, u"é"_s} << u"é\n"_s;
    }
    void taskArrayText()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, text);
        const QString actual = taskArray(arguments);
        QCOMPARE(actual, text);
        QCOMPARE(actual.isNull(), text.isNull());
    }

    void toolIsKilledAtTheLimit()
    {
        qint64 pid = 0;
        const WaitedRun run{.stages = {{tool, u"hang"_s}}, .limit = std::chrono::seconds(2)};
        QVERIFY(!runAndWait(run, [&pid](const QByteArray &chunk) { pid = chunk.toLongLong(); }));
        QVERIFY(pid > 0 && !QFileInfo::exists(u"/proc/%1"_s.arg(pid)));
        QVERIFY(taskArrayWithin({tool, u"endless"_s}, std::chrono::milliseconds(100)).isNull());
    }

    void reportKeepsHeadAndTail()
    {
        ReportBuffer report(10);
        for (const char *chunk : {"0123", "456789"})
            report.append(chunk);
        QCOMPARE(report.bytes(), "0123456789");
        for (const char *chunk : {"a", "bcdefg", "hijklmnopqrstuvw", "x"})
            report.append(chunk);
        QCOMPARE(report.bytes(), "01234\ntuvwx");
    }

    void quotedItemsArriveUnchanged()
    {
        const TestPlaces places;
        setWorkFolder(places.folder.path());
        const QString file = places.file(u"$(touch x) `id`.avi"_s);
        const QStringList items{u"it's"_s, u"a  b"_s, u"$HOME;*"_s, u"é"_s, u"#"_s};
        QCOMPARE(taskWithStr(QStringList{tool, u"args"_s} + items), items.join(u'\n'));
        QCOMPARE(taskWithStr({u"readlink"_s, u"-n"_s, u"--"_s, file}), file);
        QVERIFY(!QFileInfo::exists(places.folder.filePath(u"taskWithStr"_s)));
        setWorkFolder({});
    }

    void shellRuns()
    {
        QCOMPARE(taskWithStr(u"pwd; echo"_s, u"/usr"_s), u"/usr\n"_s);
        QVERIFY(taskWithStr(u"true"_s).isNull());
        QCOMPARE(taskBloquante::verbose({u"cat; echo $0 $1; echo err >&2"_s, u"a"_s, u"b c"_s}),
                 u"a b c\nerr"_s);
        const TestPlaces places;
        taskShell(u"touch '%1/made'"_s.arg(places.folder.path()));
        QTRY_VERIFY(QFileInfo::exists(places.folder.filePath(u"made"_s)));
    }

    void placesOfTools()
    {
        const TestPlaces places;
        QCOMPARE(ffmpegPath(), u""_s);
        for (const QString &name :
             {u"support/ffmpeg"_s, u"resources/ffmpeg"_s, u"resources/tools/ffmpeg"_s}) {
            const QString path = places.file(name);
            QCOMPARE(ffmpegPath(), path);
        }
        QVERIFY(!toolEnvironment().contains(u"FONTCONFIG_FILE"_s));
        QVERIFY(!toolEnvironment().contains(u"FONTCONFIG_PATH"_s));
        const QString fonts = places.file(u"support/fonts.conf"_s);
        QCOMPARE(toolEnvironment().value(u"FONTCONFIG_FILE"_s), fonts);
    }
};

QTEST_GUILESS_MAIN(TestBlockingRuns)
#include "test_blockingRuns.moc"
