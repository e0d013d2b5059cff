#include "app/passExecutor.h"
#include "settings/stringTables.h"
#include "sheet/excerpts.h"
#include "sheet/extractionPasses.h"
#include "sheet/pictureTimes.h"
#include "tasks/blockingRuns.h"
#include "tasks/toolPlaces.h"

#include <QDir>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

constexpr QSize thumbnailSize(96, 54);

QByteArray content(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

/// The quick form of the passes against the passes as they are planned.
class TestFastExtraction : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    QString folder(const QString &name) const
    {
        const QString path = m_folder.filePath(name);
        QDir().mkpath(path);
        return path;
    }

    PassMap passes(const SourceDico &source, double length, int count, const QString &name) const
    {
        PassMap map;
        const QString filter = thumbnailFilter(source, thumbnailSize);
        for (int number = 0; number < count; ++number)
            map[number] = ffmpegPass(source, number * length / count, filter,
                                     thumbnailPath(folder(name), number));
        return map;
    }

    SourceDico clip(const QString &name, const QStringList &options, const QString &codec) const
    {
        const QString path = m_folder.filePath(name);
        QStringList arguments{u"-v"_s,    u"error"_s, u"-f"_s,
                              u"lavfi"_s, u"-i"_s,    u"testsrc2=s=192x108:r=25"_s};
        arguments << options << u"-y"_s << path;
        if (QProcess::execute(ffmpegPath(), arguments) != 0)
            return {};
        SourceDico source;
        write(source, Keys::srcPathStr, path);
        write(source, Keys::v_codec, 0, codec);
        write(source, Keys::v_width, 0, 192);
        write(source, Keys::v_height, 0, 108);
        write(source, Keys::wrapper, containerOf(name));
        write(source, Keys::w_offset, 0.0);
        return source;
    }

    static QString containerOf(const QString &name)
    {
        if (name.endsWith(u".mp4") || name.endsWith(u".mov"))
            return u"mov,mp4,m4a,3gp,3g2,mj2"_s;
        return name.endsWith(u".ts") || name.endsWith(u".avi") ? name.section(u'.', -1)
                                                               : u"matroska,webm"_s;
    }

    static void runPlain(const PassMap &passes)
    {
        for (const auto &[number, planned] : passes) {
            for (QStringList pass = planned; !pass.isEmpty(); pass = nextAttempt(pass)) {
                taskArray(pass);
                if (QFile::exists(planned.constLast()))
                    break;
            }
        }
    }

private Q_SLOTS:
    void runsHoldEveryPassOnce()
    {
        SourceDico source{{Keys::srcPathStr, u"/v/a.mp4"_s}, {Keys::v_codec(0), u"hevc"_s}};
        PassMap planned = passes(source, 100, 20, u"x"_s);
        planned[7] = withoutIntraSelection(planned[7]);
        const auto runs = intraPlan(planned, source, 2).runs;
        std::vector<int> taken;
        for (const FastRun &run : runs) {
            taken.insert(taken.end(), run.pictures.begin(), run.pictures.end());
            QCOMPARE(run.arguments.count(u"-i"_s), qsizetype(run.pictures.size()));
            QCOMPARE(run.arguments.count(u"low_delay"_s), qsizetype(run.pictures.size()));
        }
        QCOMPARE(taken.size(), 19U);
        QVERIFY(std::ranges::is_sorted(taken) && std::ranges::find(taken, 7) == taken.end());
        // A seek counts from the start of the source, which has to be known or looked for.
        const QString isNotLookedFor = u"-nofind_stream_info"_s;
        write(source, Keys::wrapper, containerOf(u".mp4"_s));
        for (const double start : {0.0, 0.5}) {
            write(source, Keys::w_offset, start);
            for (const FastRun &run : intraPlan(planned, source, 2).runs)
                QCOMPARE(run.arguments.contains(isNotLookedFor), start == 0);
        }
        // The list that tells of an excerpt has one line for a path.
        for (const QString &path : {u"/v/'a b'.mp4"_s, u"/v/a\nb.mp4"_s})
            QCOMPARE(excerptInput(path, {}).isEmpty(), path.contains(u'\n'));
        // Which of two streams ffmpeg takes is for it alone to say.
        write(source, Keys::v_codec, 1, u"mjpeg"_s);
        for (const FastRun &run : intraPlan(planned, source, 2).runs)
            QCOMPARE(run.pictures.size(), 1U);
        // Unless the passes say it.
        write(source, Keys::w_videos, 2);
        write(source, Keys::v_id, 0, 3);
        planned = passes(source, 100, 20, u"x"_s);
        std::vector<FastRun> named = intraPlan(planned, source, 2).runs;
        QVERIFY(
            std::ranges::any_of(named, [](const FastRun &run) { return run.pictures.size() > 1; }));
        for (const FastRun &run : named) {
            for (qsizetype input = 0; input < qsizetype(run.pictures.size()); ++input)
                QVERIFY(run.arguments.contains(u"%1:3"_s.arg(input)));
        }
        named = stretchRuns(planned, source);
        QCOMPARE(named.size(), 1U);
        QCOMPARE(named.front().arguments.count(u"0:3"_s), 40);
    }

    void givesThePicturesOfThePlainPasses_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QString>("codec");
        QTest::addColumn<bool>("isInterlaced");
        QTest::addColumn<bool>("isTold");
        QTest::addColumn<bool>("isAny");
        enum Trait { common, interlaced, told, any };
        const auto row = [](const char *title, const QString &name, const QString &options,
                            const QString &codec, Trait trait = common) {
            QTest::newRow(title) << name << options.split(u' ') << codec << (trait == interlaced)
                                 << (trait == told) << (trait == any);
        };
        row("an intra picture a second", u"a.mp4"_s, u"-t 12 -c:v libx264 -g 25"_s, u"h264"_s,
            told);
        row("one intra picture in all", u"b.mp4"_s, u"-t 12 -c:v libx264 -g 999"_s, u"h264"_s,
            told);
        row("any picture", u"r.mp4"_s, u"-t 12 -c:v libx264 -g 999"_s, u"h264"_s, any);
        row("intra pictures far apart", u"c's 100% é.mkv"_s,
            u"-t 40 -c:v libx264 -preset ultrafast -g 400 -keyint_min 400 -sc_threshold 0"_s,
            u"h264"_s, told);
        // A cut of the picture soon after a key picture makes an intra picture that is none.
        const QString cuts = u"-t 20 -vf negate=enable='lt(mod(t\\,3.4)\\,1.7)' -c:v libx264 "
                             "-preset fast -x264-params keyint=200:min-keyint=199:scenecut=100"_s;
        row("intra pictures that are no key pictures", u"i.mp4"_s, cuts, u"h264"_s, told);
        row("the same in Matroska", u"j.mkv"_s, cuts, u"h264"_s, told);
        row("the same in a stream", u"k.ts"_s, cuts, u"h264"_s);
        row("open groups", u"l.mov"_s,
            u"-t 20 -c:v libx264 -preset fast -x264-params keyint=60:open-gop=1:bframes=5"_s,
            u"h264"_s, told);
        row("few pictures a second", u"m.mp4"_s,
            u"-t 60 -r 1 -c:v libx264 -preset slow -x264-params keyint=7:bframes=8"_s, u"h264"_s,
            told);
        row("HEVC", u"n.mp4"_s,
            u"-t 20 -c:v libx265 -preset ultrafast -x265-params log-level=error:keyint=60"_s,
            u"hevc"_s, told);
        row("VP9", u"o.webm"_s, u"-t 20 -c:v libvpx-vp9 -deadline realtime -cpu-used 8 -g 60"_s,
            u"vp9"_s, told);
        row("AV1", u"p.mp4"_s, u"-t 20 -c:v libsvtav1 -preset 12 -g 60"_s, u"av1"_s, told);
        row("ProRes", u"q.mov"_s, u"-t 5 -c:v prores_ks"_s, u"prores"_s, told);
        row("turned", u"h.mp4"_s,
            u"-t 20 -c:v libx264 -preset ultrafast -g 100 -metadata:s:v:0 rotate=90"_s, u"h264"_s,
            told);
        row("interlaced", u"d.ts"_s, u"-t 6 -c:v mpeg2video -q:v 5 -flags +ildct+ilme -top 1"_s,
            u"mpeg2video"_s, interlaced);
        row("stretch of interlaced", u"e.avi"_s,
            u"-t 6 -c:v mpeg2video -q:v 5 -flags +ildct+ilme -top 1 -g 600"_s, u"mpeg2video"_s,
            interlaced);
        row("all intra", u"f.avi"_s, u"-t 5 -c:v mjpeg -q:v 5"_s, u"mjpeg"_s);
        row("web", u"g.webm"_s, u"-t 5 -c:v libvpx -deadline realtime"_s, u"vp8"_s);
    }

    void givesThePicturesOfThePlainPasses()
    {
        QFETCH(QString, name);
        QFETCH(QStringList, options);
        QFETCH(QString, codec);
        QFETCH(bool, isInterlaced);
        QFETCH(bool, isTold);
        QFETCH(bool, isAny);
        SourceDico source = clip(name, options, codec);
        QVERIFY(!source.isEmpty());
        const QString fields = isInterlaced ? u"TFF"_s : u"PFF"_s;
        write(source, Keys::v_fields, 0, localised(fields, fieldsTable));
        if (isAny)
            write(source, Keys::intraFailure, 1);
        const double length = options.value(1).toDouble();
        const int count = 9;

        runPlain(passes(source, length, count, name + u".plain"_s));
        // Of these the container tells which picture it is that a pass takes.
        size_t times = 0;
        const PassMap planned = passes(source, length, count, name + u".fast"_s);
        const IntraPlan plan = intraPlan(planned, source, 2);
        for (const FastRun &run : plan.runs)
            times += run.times.size();
        QCOMPARE(times > 0, isTold);
        QVERIFY(!isAny || stretchRuns(planned, source, plan.runUps).size() == 1);
        PassExecutor executor;
        executor.setProcesses(2);
        QSignalSpy landed(&executor, &PassExecutor::landed);
        QSignalSpy finished(&executor, &PassExecutor::finished);
        executor.start(planned, source);
        QVERIFY(finished.wait(60000));
        QVERIFY(!executor.isRunning());

        const QStringList plain =
            QDir(folder(name + u".plain"_s)).entryList(QDir::Files, QDir::Name);
        QCOMPARE(plain.size(), count);
        QCOMPARE(landed.constLast().constFirst().toInt(), count);
        QCOMPARE(QDir(folder(name + u".fast"_s)).entryList(QDir::Files, QDir::Name), plain);
        for (const QString &picture : plain)
            QVERIFY2(content(folder(name + u".plain"_s) + u'/' + picture) ==
                         content(folder(name + u".fast"_s) + u'/' + picture),
                     qPrintable(picture));
    }

    void damagedPicturesAreMadeAgain_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::addColumn<bool>("isLasting");
        QTest::addColumn<int>("processes");
        const QString cutOff = u"truncate -s -9 \"$picture\""_s;
        const QString holed = u"dd if=/dev/zero of=\"$picture\" bs=1 seek=900 count=900 "
                              "conv=notrunc status=none"_s;
        QTest::newRow("cut off once") << cutOff << false << 1;
        QTest::newRow("cut off in several processes") << cutOff << false << 2;
        QTest::newRow("a hole once") << holed << false << 2;
        QTest::newRow("always cut off") << cutOff << true << 1;
        QTest::newRow("always noise") << u"head -c 3000 /dev/urandom > \"$picture\""_s << true << 2;
    }

    void damagedPicturesAreMadeAgain()
    {
        QFETCH(QString, damage);
        QFETCH(bool, isLasting);
        QFETCH(int, processes);
        const QTemporaryDir tried;
        const SourceDico source =
            clip(u"damaged.avi"_s, u"-t 5 -c:v mpeg4 -g 5"_s.split(u' '), u"mpeg4"_s);
        const QString name = QString::fromLatin1(QTest::currentDataTag());
        const PassMap sound = passes(source, 5, 4, name + u".sound"_s);
        runPlain(sound);
        // A tool that damages each picture, or only the first file that it makes of each.
        QFile tool(tried.filePath(u"tool"_s));
        QVERIFY(tool.open(QIODevice::WriteOnly));
        tool.write(u"#!/bin/sh\n%1 \"$@\" || exit\n"
                   "for picture; do case $picture in */img*.jpg)\n"
                   "  seen=%2/${picture##*/}; [ %3 = 0 ] && [ -e \"$seen\" ] && continue\n"
                   "  : > \"$seen\"; [ -e \"$picture\" ] && %4;; esac; done; exit 0\n"_s
                       .arg(ffmpegPath(), tried.path(), QString::number(isLasting), damage)
                       .toUtf8());
        tool.close();
        QVERIFY(tool.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        PassMap planned = passes(source, 5, 4, name);
        for (auto &[number, pass] : planned)
            pass.first() = tool.fileName();
        PassExecutor executor;
        executor.setProcesses(processes);
        QSignalSpy finished(&executor, &PassExecutor::finished);
        executor.start(planned, source);
        QVERIFY(finished.wait(60000));
        if (isLasting) {
            QVERIFY(QDir(folder(name)).isEmpty());
            return;
        }
        for (const auto &[number, pass] : planned)
            QVERIFY(content(pass.last()) == content(sound.at(number).last()));
    }

    void tellsTheTimesOfManyPictures()
    {
        // De-interlacing lets many pictures through that nobody takes.
        SourceDico source = clip(
            u"told.avi"_s, u"-t 12 -c:v libx264 -g 25 -flags +ildct+ilme"_s.split(u' '), u"h264"_s);
        write(source, Keys::v_fields, 0, localised(u"TFF"_s, fieldsTable));
        PassMap planned = passes(source, 12, 60, u"told"_s);
        for (auto &[number, pass] : planned)
            pass[pass.indexOf(u"-vf"_s) + 1] += timeTeller(number);
        PassExecutor executor;
        QSignalSpy told(&executor, &PassExecutor::told);
        QSignalSpy finished(&executor, &PassExecutor::finished);
        executor.start(planned, source);
        QVERIFY(finished.wait(60000));
        QCOMPARE(told.count(), 60);
    }

    void canBePausedAndStopped()
    {
        const SourceDico source = clip(u"stopped.mp4"_s, {u"-t"_s, u"4"_s}, u"h264"_s);
        PassExecutor executor;
        executor.setProcesses(1);
        QSignalSpy finished(&executor, &PassExecutor::finished);
        executor.start(passes(source, 4, 8, u"stopped"_s), source);
        executor.suspend();
        QVERIFY(!finished.wait(300));
        executor.resume();
        QVERIFY(finished.wait(30000));
        executor.start(passes(source, 4, 8, u"killed"_s), source);
        executor.terminate();
        QVERIFY(finished.wait(5000));
        QCOMPARE(finished.count(), 2);
        QVERIFY(QDir(folder(u"killed"_s)).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestFastExtraction)
#include "test_fastExtraction.moc"
