#include "tasks/blockingRuns.h"

#include "tasks/childProcess.h"
#include "tasks/testPlaces.h"
#include "tasks/toolPlaces.h"
#include "tasks/waitedRun.h"
#include "tasks/workFolder.h"

#include <QTest>
#include <QThread>

using namespace Qt::StringLiterals;
using namespace vignar;

static const QString yes = u"/usr/bin/yes"_s;
static constexpr int patienceMs = 60'000;
static const QString print = u"/usr/bin/printf"_s;

class TestBlockingRuns : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void taskArrayText()
    {
        for (const QString &line :
             {u""_s, u"/bin/true | | /bin/true"_s, u"/no/tool"_s, u"/usr/bin/yes | /no/tool"_s,
              u"/etc/passwd"_s, u"/bin/true"_s, u"/usr/bin/printf \\n"_s})
            QVERIFY2(taskArray(line.split(u' ', Qt::SkipEmptyParts)).isNull(), qPrintable(line));
        QCOMPARE(taskArray({print, u" \\n\\n"_s}), u" \n\n"_s);
        QCOMPARE(taskArray({u"/bin/sh"_s, u"-c"_s, u"echo no >&2; exit 1"_s}), u"no\n"_s);
        // Latin-1 beside UTF-8.
        QCOMPARE(taskArray({print, u"é.avi\n\\351\n"_s}), u"é.avi\né\n"_s);
        QCOMPARE(taskArray({yes, u"|"_s, print, u"é\\n"_s}), u"é\n"_s);
    }

    void toolIsKilledAtTheLimit()
    {
        qint64 pid = 0;
        const WaitedRun run{.stages = {{u"/bin/sh"_s, u"-c"_s, u"echo $$; exec sleep 600"_s}},
                            .limit = std::chrono::seconds(2)};
        QVERIFY(!runAndWait(run, [&pid](const QByteArray &chunk) { pid = chunk.toLongLong(); }));
        QVERIFY(pid > 0 && !QFileInfo::exists(u"/proc/%1"_s.arg(pid)));
        QVERIFY(taskArrayWithin({yes}, std::chrono::milliseconds(100)).isNull());
    }

    void toolIsKilledWithItsThread()
    {
        QString text = u"not run"_s;
        const std::unique_ptr<QThread> thread(QThread::create([&text] {
            text = taskArray({u"/bin/sh"_s, u"-c"_s, u"exec sleep 600"_s});
        }));
        thread->start();
        thread->requestInterruption();
        QVERIFY(thread->wait(patienceMs));
        QVERIFY(text.isNull());
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
        QCOMPARE(taskWithStr(QStringList{print, u"%s,"_s} + items), items.join(u',') + u',');
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
        const QString fonts = places.file(u"support/fonts.conf"_s);
        QCOMPARE(toolEnvironment().value(u"FONTCONFIG_FILE"_s), fonts);
    }
};

QTEST_GUILESS_MAIN(TestBlockingRuns)
#include "test_blockingRuns.moc"
