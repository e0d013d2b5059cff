#include "cli/programRun.h"
#include "support/folderListing.h"
#include "support/makeClip.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace vignar;

/// Sources that mean harm, and that the guard against them lets all others through.
class TestHostile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void eachCostsItsLimitAndOneLine_data();
    void eachCostsItsLimitAndOneLine();
    void everyDeclaredContainerOpens();
    void fileSizeLimitOfTheUser();

private:
    QTemporaryDir m_hostile;
    QTemporaryDir m_out;
    QMap<QString, QJsonObject> m_answers;
    int m_lines = 0;
};

void TestHostile::initTestCase()
{
    const QString folder = m_hostile.path();
    QCOMPARE(QProcess::execute(QStringLiteral(MAKE_HOSTILE), {folder}), 0);
    const ProgramRun run = runVignar({u"sheet"_s, u"--json"_s, u"-o"_s, m_out.path(),
                                      folder + u"/lists"_s, folder + u"/tables"_s});
    QCOMPARE(run.status, 1);
    m_lines = int(run.lines.size());
    for (const QJsonObject &line : run.lines)
        m_answers.insert(QFileInfo(line.value(u"source"_s).toString()).fileName(), line);
}

void TestHostile::eachCostsItsLimitAndOneLine_data()
{
    QTest::addColumn<QString>("status");
    QTest::addColumn<QString>("reason");
    const QString list = u"it is a list of other files, not a video"_s;
    for (const char *name : {"playlist.mp4", "playlist.ts", "live.mp4", "manifest.mp4",
                             "script.mp4", "itself.mkv", "subtitles.vob", "session.mp4"})
        QTest::newRow(name) << u"refused"_s << list;
    QTest::newRow("private.mp4") << u"made"_s << QString();
    QTest::newRow("plain.mov") << u"made"_s << QString();
    QTest::newRow("large.mov") << u"refused"_s << u"it needed too much memory"_s;
    QTest::newRow("five-million.mov") << u"made"_s << QString();
    QTest::newRow("fifty-million.mov")
        << u"refused"_s << u"no picture could be extracted from it"_s;
}

void TestHostile::eachCostsItsLimitAndOneLine()
{
#ifdef __SANITIZE_ADDRESS__
    QSKIP("Memory is not limited in a program of the sanitizer.");
#endif
    QFETCH(QString, reason);
    const QJsonObject answer = m_answers.value(QString::fromLatin1(QTest::currentDataTag()));
    QTEST(answer.value(u"status"_s).toString(), "status");
    QCOMPARE(answer.value(u"reason"_s).toString(), reason);
    QCOMPARE(m_lines, 13);
}

void TestHostile::everyDeclaredContainerOpens()
{
    const QTemporaryDir clips;
    const QString picture = u"testsrc2=s=720x576:r=25:d=0.4"_s;
    // Extension, then what ffmpeg has to be told to write it.
    const QStringList kinds{u"mp4"_s,
                            u"m4v -f mp4"_s,
                            u"mov"_s,
                            u"qt -f mov"_s,
                            u"f4v -f mp4"_s,
                            u"mkv"_s,
                            u"webm -c:v libvpx"_s,
                            u"avi"_s,
                            u"divx -f avi"_s,
                            u"mpg"_s,
                            u"mpeg -f vob"_s,
                            u"mpe -f mpeg"_s,
                            u"m1v"_s,
                            u"m2v"_s,
                            u"mpv -f mpeg2video"_s,
                            u"vob"_s,
                            u"vro -f vob"_s,
                            u"mod -f vob"_s,
                            u"evo -f vob"_s,
                            u"tod -f mpegts"_s,
                            u"ts"_s,
                            u"m2t -f mpegts"_s,
                            u"m2ts"_s,
                            u"mts"_s,
                            u"flv"_s,
                            u"wmv"_s,
                            u"asf"_s,
                            u"dvr-ms -f asf"_s,
                            u"3gp -c:v mpeg4"_s,
                            u"3g2 -c:v mpeg4"_s,
                            u"ogv"_s,
                            u"ogm -f ogg"_s,
                            u"rm"_s,
                            u"rmvb -f rm -c:v rv20"_s,
                            u"dv"_s,
                            u"dif -f dv"_s,
                            u"mxf"_s,
                            u"wtv -c:v mpeg2video"_s,
                            u"nut"_s,
                            u"y4m -pix_fmt yuv420p"_s,
                            u"gxf"_s};
    for (const QString &kind : kinds) {
        const QStringList words = kind.split(u' ');
        const QString path = clips.filePath(u"clip."_s + words.constFirst());
        QVERIFY2(makeClip(path, picture, words.mid(1)), qPrintable(kind));
    }
    QVERIFY(makeClip(clips.filePath(u"recording.eyetv/clip.mpg"_s), picture));
    const ProgramRun run = runVignar({u"analyse"_s, u"--json"_s, clips.path()});
    for (const QJsonObject &line : run.lines)
        QVERIFY2(line.value(u"status"_s).toString() == u"analysed", qPrintable(run.errors));
    QCOMPARE(run.lines.size(), kinds.size() + 1);
    QCOMPARE(run.status, 0);
}

void TestHostile::fileSizeLimitOfTheUser()
{
    // Enough for the logs, not for a sheet: that fails, and is told.
    rlimit before{};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small{.rlim_cur = 20'000, .rlim_max = before.rlim_max};
    const QTemporaryDir out;
    QProcess program;
    program.setChildProcessModifier([small] { ::setrlimit(RLIMIT_FSIZE, &small); });
    program.start(QStringLiteral(VIGNAR_CLI), {u"sheet"_s, u"--json"_s, u"-o"_s, out.path(),
                                               m_hostile.filePath(u"private.mp4"_s)});
    const ProgramRun run = finished(program);
    QCOMPARE(run.status, 1);
    QCOMPARE(run.lines.size(), 1);
    QCOMPARE(filesUnder(out.path()), QStringList());
}

QTEST_GUILESS_MAIN(TestHostile)
#include "test_hostile.moc"
