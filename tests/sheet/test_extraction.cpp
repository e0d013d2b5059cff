#include "settings/stringTables.h"
#include "sheet/extractionFolder.h"
#include "sheet/extractionPasses.h"
#include "sheet/pictureTimes.h"
#include "sheet/thumbnailPlan.h"
#include "tasks/toolPlaces.h"
#include "tasks/workFolder.h"

#include <QDir>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace vignar;
using namespace Qt::StringLiterals;

static void writeFile(const QString &path, const QByteArray &content = "kept")
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

class TestExtraction : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    QString at(const QString &name) const { return m_folder->filePath(name); }
    QStringList entries(const QString &folder = {}) const
    {
        return QDir(at(folder)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void passesFollowTheRecord()
    {
        SourceDico source{{Keys::srcPathStr, u"/v/a b.mov"_s}};
        const QString filter = thumbnailFilter(source, {64, 48});
        const QStringList pass = ffmpegPass(source, 62.506, filter, thumbnailPath(u"/o"_s, 7));
        QCOMPARE(pass.mid(1).join(u' '),
                 u"-ss 62.51 -loglevel info -i /v/a b.mov -t 12 -vframes 1"
                 " -vf select=eq(pict_type\\,I),yadif=1,scale=64:48,setsar=1/1"
                 " -b:v 20M -bt 1000M -q:v 1 -an -y /o/img07.jpg"_s);
        // A run-up enters the source earlier, or not at all, and decodes up to the instant.
        const QStringList late = nextAttempt(nextAttempt(pass));
        QCOMPARE(late.mid(1, 8).join(u' '), u"-ss 32.51 -loglevel info -i /v/a b.mov -ss 30.00"_s);
        QVERIFY(nextAttempt(late).isEmpty());
        write(source, Keys::intraFailure, 1);
        const QString freed = thumbnailFilter(source, {64, 48});
        QCOMPARE(nextAttempt(pass), ffmpegPass(source, 62.506, freed, pass.last()));
        const QStringList early = nextAttempt(ffmpegPass(source, 4, freed, pass.last()));
        QCOMPARE(early.mid(1, 6).join(u' '), u"-loglevel info -i /v/a b.mov -ss 4.00"_s);
        write(source, Keys::v_fields, 0, localised(u"PFF"_s, fieldsTable));
        QCOMPARE(thumbnailFilter(source, {64, 48}), u"scale=64:48,setsar=1/1"_s);

        // Of several streams the one of the record is named, in every attempt.
        write(source, Keys::w_videos, 2);
        write(source, Keys::v_id, 0, 1);
        for (QStringList named = exactPass(source, 62.5, filter, pass.last()); !named.isEmpty();
             named = nextAttempt(named))
            QVERIFY(named.join(u' ').contains(u" -map 0:1 -t 12 "_s));

        ThumbnailPlan plan;
        plan.size = {64, 48};
        plan.timecodes = QStringList{u"0:00:01.00"_s, u"0:00:02.00"_s};
        QCOMPARE(grabberPass(source, plan, u"/o"_s).mid(1).join(u' '),
                 u"-i /v/a b.mov -w 64 -h 48 -tc 0:00:01.00-0:00:02.00 -y -o /o"_s);
        // A relative path could be read as an option or as a protocol.
        const QStringList relative = ffmpegPass({{Keys::srcPathStr, u"concat:a"_s}}, 0, {}, {});
        QCOMPARE(relative.value(6), QDir::currentPath() + u"/concat:a"_s);
    }

    void timesAreCountedFromTheStart()
    {
        const SourceDico source{{Keys::srcPathStr, u"/v/a.mov"_s}};
        const QStringList pass =
            ffmpegPass(source, 62.5, u"scale=64:48"_s + timeTeller(7), u"/o"_s);
        const auto line = [](const QString &name, const QString &time) {
            return u"frame= 1 fps=0 \r[showinfo@%1 @ 0x5] n:  0 pts:  9 pts_time:%2 pos: 1\n"_s.arg(
                name, time);
        };
        const QString report = line(u"77"_s, u"1"_s) + line(u"7"_s, u"NOPTS"_s) +
                               line(u"substitute7"_s, u"2"_s) + line(u"7"_s, u"3.25"_s) +
                               line(u"7"_s, u"30.04"_s);
        QCOMPARE(toldTime(report, pass, 7), 65.75);
        QCOMPARE(toldTime(report, pass, 7, true), 64.5);
        QVERIFY(!toldTime(report, pass, 8));
        // What a run-up passes on its way is not the picture that it takes.
        QCOMPARE(toldTime(report, withRunUp(pass), 7), 62.54);
        QVERIFY(withRunUp(pass).join(u' ').contains(u"-vf trim=start=30.00,scale"));
    }

    void awkwardFoldersReceiveTheirPicture()
    {
        const QString name =
            u"-file:it's \"so\"\n$(touch ran) `touch ran`;&| été 日本 🎬 50%% %03d"_s;
        const QString clip = at(name + u"/clip "_s + name + u".mp4"_s);
        QVERIFY(QDir().mkdir(at(name)));
        const QString test = u"testsrc=size=320x240:duration=2"_s;
        QCOMPARE(QProcess::execute(ffmpegPath(), {u"-v"_s, u"error"_s, u"-f"_s, u"lavfi"_s, u"-i"_s,
                                                  test, u"-pix_fmt"_s, u"yuv420p"_s, clip}),
                 0);
        setWorkFolder(at(name + u"/work "_s + name));
        auto folder = std::make_unique<Result<ExtractionFolder>>(ExtractionFolder::make());
        QVERIFY(*folder);
        const QString path = (*folder)->path();
        const SheetPlan plan = planSheet(bigLayout, {{Keys::srcPathStr, clip}}, path);
        const auto pass = withoutIntraSelection(plan.ffmpegPasses.value(u"0"_s).toStringList());
        QCOMPARE(QProcess::execute(pass.first(), pass.mid(1)), 0);

        QStringList pictures{thumbnailPath(path, 0)};
        QCOMPARE(QImage(pictures.first()).size(), plan.thumbnails.size);
        // A pass that failed half-way leaves an empty file; the order is that of the numbers.
        writeFile(thumbnailPath(path, 1), {});
        for (const int index : {20, 100}) {
            pictures.append(thumbnailPath(path, index));
            writeFile(pictures.last());
        }
        QCOMPARE(extractedPictures(path), pictures);
        folder.reset();
        QVERIFY(entries(name + u"/work "_s + name).isEmpty());
    }

    void extractionFoldersArePrivate()
    {
        const mode_t mask = ::umask(0002);
        setWorkFolder(at(u"work"_s));
        {
            const auto first = ExtractionFolder::make();
            const auto second = ExtractionFolder::make();
            QVERIFY(first && second && first->path() != second->path());
            const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
            QVERIFY(!(QFile::permissions(first->path()) & others));
            writeFile(thumbnailPath(first->path(), 0));
        }
        QVERIFY(entries(u"work"_s).isEmpty());
        ::umask(mask);
        writeFile(at(u"taken"_s));
        setWorkFolder(at(u"taken"_s));
        const auto none = ExtractionFolder::make();
        QVERIFY(!none && none.reason().contains(at(u"taken"_s)));
        setWorkFolder({});
    }
};

QTEST_GUILESS_MAIN(TestExtraction)
#include "test_extraction.moc"
