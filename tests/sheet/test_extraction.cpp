#include "settings/stringTables.h"
#include "sheet/extractionFolder.h"
#include "sheet/extractionPasses.h"
#include "sheet/thumbnailPlan.h"
#include "tasks/toolPlaces.h"

#include <QDir>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <sys/wait.h>
#include <unistd.h>

using namespace vignar;
using namespace Qt::StringLiterals;

class TestExtraction : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void passesFollowTheRecord();
    void awkwardFoldersReceiveTheirPicture_data();
    void awkwardFoldersReceiveTheirPicture();
    void foreignFoldersAreSteppedAround();
    void filesAreNotTakenForFolders();
    void foldersOfALivingRunAreSteppedAround();
    void foldersOfADeadRunAreEmptied();

private:
    QString at(const QString &name) const { return m_folder->filePath(name); }
    QStringList entries(const QString &folder = {}) const
    {
        return QDir(at(folder)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

static void writeFile(const QString &path, const QByteArray &content = "kept")
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

static bool succeeds(const QStringList &command)
{
    QProcess process;
    process.start(command.first(), command.mid(1));
    return process.waitForFinished() && process.exitCode() == 0;
}

static ExtractionFolder claimed(const QString &dstPath)
{
    const auto folder = claimExtractionFolder(dstPath);
    return folder ? *folder : ExtractionFolder{folder.reason(), {}};
}

void TestExtraction::passesFollowTheRecord()
{
    SourceDico source{{Keys::srcPathStr, u"/v/a b.mov"_s}};
    const QString filter = thumbnailFilter(source, {64, 48});
    const QStringList pass = ffmpegPass(source, 62.506, filter, thumbnailPath(u"/o"_s, 7));
    QCOMPARE(pass.mid(1).join(u' '), u"-ss 62.51 -loglevel info -i /v/a b.mov -t 12 -vframes 1"
                                     " -vf select=eq(pict_type\\,I),yadif=1,scale=64:48,setsar=1/1"
                                     " -b:v 20M -bt 1000M -q:v 1 -an -y /o/img07.jpg"_s);
    write(source, Keys::intraFailure, 1);
    const QString freed = thumbnailFilter(source, {64, 48});
    QCOMPARE(withoutIntraSelection(pass), ffmpegPass(source, 62.506, freed, pass.last()));
    // A run-up enters the source earlier, or not at all, and decodes up to the instant.
    const QStringList late = nextAttempt(nextAttempt(pass));
    QCOMPARE(late.mid(1, 8).join(u' '), u"-ss 32.51 -loglevel info -i /v/a b.mov -ss 30.00"_s);
    QVERIFY(nextAttempt(late).isEmpty());
    const QStringList early = withRunUp(ffmpegPass(source, 4, freed, pass.last()));
    QCOMPARE(early.mid(1, 6).join(u' '), u"-loglevel info -i /v/a b.mov -ss 4.00"_s);
    QVERIFY(nextAttempt(early).isEmpty());

    write(source, Keys::v_fields, 0, localised(u"PFF"_s, fieldsTable));
    QCOMPARE(thumbnailFilter(source, {64, 48}), u"scale=64:48,setsar=1/1"_s);

    ThumbnailPlan plan;
    plan.size = {64, 48};
    plan.timecodes = QStringList{u"0:00:01.00"_s, u"0:00:02.00"_s};
    QCOMPARE(grabberPass(source, plan, u"/o"_s).mid(1).join(u' '),
             u"-i /v/a b.mov -w 64 -h 48 -tc 0:00:01.00-0:00:02.00 -y -o /o"_s);

    // A relative path could be read as an option or as a protocol.
    const QStringList relative = ffmpegPass({{Keys::srcPathStr, u"concat:a"_s}}, 0, {}, {});
    QCOMPARE(relative.value(6), QDir::currentPath() + u"/concat:a"_s);
}

void TestExtraction::awkwardFoldersReceiveTheirPicture_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("shell words") << u"it's \"so\"\n$(touch ran) `touch ran`;&|"_s;
    QTest::newRow("option and protocol") << u"-file:concat:x"_s;
    QTest::newRow("other scripts") << u"été 日本 🎬"_s;
    QTest::newRow("number patterns") << u"50%% %03d"_s;
}

void TestExtraction::awkwardFoldersReceiveTheirPicture()
{
    QFETCH(QString, name);
    const QString clip = at(name + u"/clip "_s + name + u".mp4"_s);
    QVERIFY(QDir().mkdir(at(name)));
    QVERIFY(succeeds({ffmpegPath(), u"-f"_s, u"lavfi"_s, u"-i"_s,
                      u"testsrc=size=320x240:duration=2"_s, u"-pix_fmt"_s, u"yuv420p"_s, clip}));
    const ExtractionFolder folder = claimed(at(name + u"/sheet "_s + name));
    const SheetPlan plan = planSheet(bigLayout, {{Keys::srcPathStr, clip}}, folder.path);
    QVERIFY(succeeds(withoutIntraSelection(plan.ffmpegPasses.value(u"0"_s).toStringList())));

    const QString picture = thumbnailPath(folder.path, 0);
    QCOMPARE(QImage(picture).size(), plan.thumbnails.size);
    // A pass that failed half-way leaves an empty file; the order is that of the numbers.
    writeFile(thumbnailPath(folder.path, 1), {});
    for (const int index : {100, 20})
        writeFile(thumbnailPath(folder.path, index));
    QCOMPARE(extractedPictures(folder.path), (QStringList{picture, thumbnailPath(folder.path, 20),
                                                          thumbnailPath(folder.path, 100)}));
    releaseExtractionFolder(folder.path, folder.made);
    QCOMPARE(entries(name), QStringList{QFileInfo(clip).fileName()});
    QCOMPARE(entries(), QStringList{name});
}

void TestExtraction::foreignFoldersAreSteppedAround()
{
    const QString base = at(u"clip/extractedImg"_s);
    writeFile(base + u"/img00.jpg"_s);
    // A planted link must not lead a removal elsewhere, whatever lies behind it.
    writeFile(at(u"pictures/img00.jpg"_s));
    writeFile(at(u"pictures/.vignar-extraction"_s));
    QVERIFY(QFile::link(at(u"pictures"_s), base + u"-1"_s));

    const ExtractionFolder folder = claimed(at(u"clip"_s));
    QCOMPARE(folder.path, base + u"-2"_s);
    for (const QString &path : {folder.path, base, base + u"-1"_s})
        releaseExtractionFolder(path, {path});
    QCOMPARE(entries(u"clip"_s), (QStringList{u"extractedImg"_s, u"extractedImg-1"_s}));
    QCOMPARE(entries(u"clip/extractedImg"_s), QStringList{u"img00.jpg"_s});
    QCOMPARE(entries(u"pictures"_s).size(), 2);
}

void TestExtraction::filesAreNotTakenForFolders()
{
    writeFile(at(u"file"_s));
    const ExtractionFolder beside = claimed(at(u"file"_s));
    QCOMPARE(beside.path, at(u"file-1/extractedImg"_s));
    releaseExtractionFolder(beside.path, beside.made);
    const auto below = claimExtractionFolder(at(u"file/sub/clip"_s));
    QVERIFY(!below && below.reason().contains(at(u"file/sub"_s)));
    QCOMPARE(entries(), QStringList{u"file"_s});
}

void TestExtraction::foldersOfALivingRunAreSteppedAround()
{
    const ExtractionFolder first = claimed(at(u"deep/er/clip"_s));
    const ExtractionFolder second = claimed(at(u"deep/er/clip"_s));
    QCOMPARE(second.path, first.path + u"-1"_s);
    writeFile(thumbnailPath(second.path, 0));
    releaseExtractionFolder(first.path, first.made);
    QCOMPARE(extractedPictures(second.path).size(), 1);
    releaseExtractionFolder(second.path, second.made);
    QVERIFY(entries().isEmpty());
}

void TestExtraction::foldersOfADeadRunAreEmptied()
{
    const QString path = at(u"clip/extractedImg"_s);
    const pid_t crashing = fork();
    if (crashing == 0)
        _exit(claimed(at(u"clip"_s)).path == path ? 0 : 1);
    int status = 1;
    QVERIFY(waitpid(crashing, &status, 0) == crashing && status == 0);
    for (const QString &name : {u"img03.jpg"_s, u"img04.jpg.a1B2c3"_s, u"mine.jpg"_s})
        writeFile(path + u'/' + name);

    const ExtractionFolder folder = claimed(at(u"clip"_s));
    QCOMPARE(folder.path, path);
    QCOMPARE(folder.made, (QStringList{path, at(u"clip"_s)}));
    releaseExtractionFolder(folder.path, folder.made);
    QCOMPARE(entries(u"clip/extractedImg"_s), QStringList{u"mine.jpg"_s});
}

QTEST_GUILESS_MAIN(TestExtraction)
#include "test_extraction.moc"
