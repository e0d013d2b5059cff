#include "analysis/ffProbeRuns.h"
#include "analysis/ffProbes.h"
#include "settings/stringTables.h"
#include "support/makeClip.h"
#include "tasks/testPlaces.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

QString idetLine(int top, int bottom, int progressive, int undetermined)
{
    return u"[Parsed_idet_0 @ 0x1] Single frame detection: TFF:%1 BFF:%2 Progressive:%3 "
           "Undetermined:%4\n"_s.arg(top, 6)
               .arg(bottom, 6)
               .arg(progressive, 6)
               .arg(undetermined, 6);
}

} // namespace

class FfProbesTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    /// A clip of testsrc2 pictures, encoded so.
    QString clip(const QString &name, const QString &options) const
    {
        QString path = m_folder.filePath(name);
        QProcess::execute(
            u"/usr/bin/ffmpeg"_s,
            u"-nostdin -loglevel error -f lavfi -i testsrc2=s=160x120:r=50"_s.split(u' ') +
                options.split(u' ') + QStringList{u"-y"_s, path});
        return path;
    }

private Q_SLOTS:
    void recognisesDuplicatedPictures()
    {
        const QString all = u"*** 3 dup!\ntimestamp discontinuity for stream #0:0\n"_s;
        QVERIFY(isFfmpegVsyncText(all));
        for (const QString &word : {u"***"_s, u"dup!"_s, u"timestamp discontinuity"_s})
            QVERIFY(!isFfmpegVsyncText(QString(all).remove(word)));
    }

    void decidesTheFieldOrder_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("order");
        QTest::newRow("top") << idetLine(90, 10, 200, 0) << u"TFF"_s;
        QTest::newRow("equal") << idetLine(4, 4, 0, 0) << u"TFF"_s;
        QTest::newRow("bottom") << idetLine(10, 90, 0, 0) << u"BFF"_s;
        QTest::newRow("bottom alone") << idetLine(0, 1, 99, 0) << u"BFF"_s;
        QTest::newRow("progressive") << idetLine(0, 0, 10, 9) << u"PFF"_s;
        QTest::newRow("undecided") << idetLine(0, 0, 10, 10) << QString();
        QTest::newRow("the last line counts")
            << idetLine(9, 0, 0, 0) + idetLine(0, 9, 0, 0) +
                   u"[Parsed_idet_0 @ 0x1] Multi frame detection: TFF: 7 BFF: 0\n"_s
            << u"BFF"_s;
    }
    void decidesTheFieldOrder()
    {
        QFETCH(QString, text);
        QTEST(idetFieldOrder(text), "order");
    }

    void readsTheLastProgressLine_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("seconds");
        QTest::newRow("timecode") << u"size=N/A time=00:00:02.00 x\rL time=00:01:30.50 bitrate="_s
                                  << 90;
        QTest::newRow("seconds") << u"size= 1kB time=12.99 bitrate="_s << 12;
        QTest::newRow("length of the last picture")
            << u"frame=   75 fps=0.0 Lsize=N/A time=00:00:02.95 bitrate="_s << 3;
        QTest::newRow("pictures shown later than decoded")
            << u"frame= 1 time=-00:00:00.07 x\rframe=  125 time=00:00:04.88 bitrate="_s << 5;
        QTest::newRow("pictures that are minutes apart")
            << u"frame=    2 fps=0.0 time=00:04:00.50 bitrate="_s << 241;
        QTest::newRow("less than one") << u"time=00:00:00.40 "_s << 1;
        QTest::newRow("unknown") << u"time=N/A bitrate=N/A"_s << 1;
        QTest::newRow("before the start") << u"time=-00:00:00.02 "_s << 1;
        QTest::newRow("endless both ways") << u"time=9e38:-9e38:0 "_s << 1;
        QTest::newRow("none") << u"a.m2v: Invalid data found"_s << 1;
    }
    void readsTheLastProgressLine()
    {
        QFETCH(QString, text);
        QTEST(durationM2vFromText(text), "seconds");
    }

    void measuresStreamsAgainstTheVideo()
    {
        const QString trace =
            u"[mpegts @ 0x1] ff_read_packet stream=%1, pts=%2, dts=%3, size=9\n"_s;
        const QString streams = u"Input #0, mpegts, from 'a':\n"
                                "  Stream #0:0[0x99](eng), 1, 1/1000: Subtitle: dvb_subtitle\n"
                                "  Stream #0:1[0x100], 50, 1/90000: Video: h264 (Main), 64x48\n"
                                "    Stream #0:2[0x101](und), 77, 1/48000: Audio: mp2, 48000 Hz\n"
                                "  Stream #0:3: Audio: mp2\n"
                                "  Stream #0:4, 1, 1/90000: Audio: ac3\n"
                                "  Stream #0:5, 1, 1/90000: Data: bin_data\n"
                                "Output #0, yuv4mpegpipe, to 'b':\n"
                                "  Stream #0:1, 0, 1/25: Video: wrapped_avframe\n"
                                "  Stream #0:1 -> #0:1 (h264 (native) -> wrapped_avframe)\n"_s;
        const QString none = u"NOPTS"_s;
        const QString lowest = u"-9223372036854775808"_s;
        const QString times =
            u"frame=    1 fps=0.0    "_s + trace.arg(u"1"_s, u"90000"_s, none) +
            trace.arg(u"1"_s, u"86400"_s, u"0"_s) + trace.arg(u"2"_s, lowest, none) +
            trace.arg(u"2"_s, u"-960"_s, u"47983"_s) + trace.arg(u"2"_s, u"1"_s, u"1"_s) +
            trace.arg(u"3"_s, u"1500"_s, none) + trace.arg(u"5"_s, u"90000"_s, none);
        QCOMPARE(ptsDtsOffsetMs(times + streams),
                 (Dico{{u"a2_offsetMs"_s, -1000.0}, {u"a3_offsetMs"_s, 500.0}}));
        const QString early = trace.arg(u"0"_s, u"4"_s, none) + times;
        QCOMPARE(ptsDtsOffsetMs(streams + early)->value(u"s0_offsetMs"_s), -996.0);
        QVERIFY(!ptsDtsOffsetMs(streams));
        QVERIFY(!ptsDtsOffsetMs(times));
        QVERIFY(!ptsDtsOffsetMs(times + QString(streams).remove(u"Audio"_s)));
        QVERIFY(!ptsDtsOffsetMs(times + QString(streams).replace(u"Video:"_s, u"Data:"_s)));
    }

    void measuresStreamsInEveryVersion()
    {
        // The sound begins at 1.429978 s, as the container does, the first picture at 1.44 s.
        for (const char *version : {"4.1", "5.1", "7.1"}) {
            QFile file(QStringLiteral(VIGNAR_TEST_DATA "/transport.ts.%1.debug.txt")
                           .arg(QLatin1String(version)));
            QVERIFY(file.open(QIODevice::ReadOnly));
            QCOMPARE(ptsDtsOffsetMs(QString::fromUtf8(file.readAll())),
                     (Dico{{u"a1_offsetMs"_s, -10.0}}));
        }
    }

    void choosesTheDemultiplexer()
    {
        QCOMPARE(formatOfFileType(u"DIF (DV) movie file (PAL)"_s), u"dv"_s);
        QCOMPARE(formatOfFileType(u"MPEG sequence, v2, program multiplex"_s), u"mpeg"_s);
        QVERIFY(formatOfFileType(u"Matroska data"_s).isNull());
        QCOMPARE(forceFormatLite(u"Data: m1s"_s), u"mpeg"_s);
        QCOMPARE(forceFormatLite(u"Data: m2v, Data: m1s"_s), u"mpegvideo"_s);
        QVERIFY(forceFormatLite(u"Data: m2v1"_s).isNull());
        QVERIFY(forceFormatLite(u"Video: m2v"_s).isNull());
    }

    void recognisesTransportStreams()
    {
        QVERIFY(isMpegTsText(u"Input #0, mpegts, from 'a.mkv':\n  Stream #0:0"_s));
        QVERIFY(!isMpegTsText(u"Input #0, matroska,webm, from 'mpegts':"_s));
        QVERIFY(!isMpegTsText(u"Input #0, mpegts, from 'a':\nInput #0, avi, from 'b':"_s));
    }

    void readsTheVersion()
    {
        QCOMPARE(ffRevisionOfText(u"ffmpeg version 5.1.9-0+deb12u1 Copyright"_s), 5.1F);
        QCOMPARE(ffRevisionOfText(u"ffmpeg version n7.1 Copyright"_s), 7.1F);
        QCOMPARE(ffRevisionOfText(u"sh: no ffmpeg\nffmpeg version 3"_s), 0.0F);
    }

    void asksFfmpeg()
    {
        const QString interlaced = clip(u"error *** time=9.m2v"_s,
                                        u"-t 9 -vf interlace -c:v mpeg2video -flags +ildct+ilme"_s);
        QCOMPARE(durationM2v(interlaced), 9);
        const qint64 half = QFileInfo(interlaced).size() / 2;
        QVERIFY(qAbs(durationOfHead(interlaced, half) - 4) <= 1);
        QCOMPARE(ffVfIdet(interlaced), localised(u"TFF"_s, fieldsTable));
        QVERIFY(!isFfmpegVsync(interlaced, {}));
        QVERIFY(!isMpegTs(interlaced, {}));
        const QString sound = clip(u"error .ts"_s, u"-f lavfi -i sine -t 1 -c:a mp2"_s);
        QVERIFY(isMpegTs(sound, {}));
        QVERIFY(isFfmpegSuccessAudio(sound));
        QCOMPARE(forceFormat(interlaced, {}), u"mpeg"_s);
        const QString damaged =
            clip(u"MPEG.mkv"_s, u"-f lavfi -i sine -t 1 -c:a ac3 -bsf:a noise=9"_s);
        QVERIFY(!isFfmpegSuccessAudio(damaged));
        QVERIFY(forceFormat(damaged, {}).isNull());
        QVERIFY(ffRevision() >= 4);
    }

    void looksForFieldsUntilAPassDecides_data()
    {
        QTest::addColumn<QString>("pictures");
        // The first pass begins at 4 seconds, the second one at 8.
        const QString fields = u"testsrc2=s=160x120:r=50:d=%1,interlace[%2];"_s;
        const QString black = u"color=black:s=160x120:r=25:d=%1[%2];"_s;
        const QString joined = u"[a][b]concat"_s;
        QTest::newRow("first pass")
            << fields.arg(8).arg(u"a"_s) + black.arg(21).arg(u"b"_s) + joined;
        QTest::newRow("second pass")
            << black.arg(9).arg(u"a"_s) + fields.arg(4).arg(u"b"_s) + joined;
    }
    void looksForFieldsUntilAPassDecides()
    {
        QFETCH(QString, pictures);
        const QString path = m_folder.filePath(u"fields.mkv"_s);
        QVERIFY(makeClip(path, pictures, {u"-c:v"_s, u"ffv1"_s}));
        QCOMPARE(ffVfIdet(path), localised(u"TFF"_s, fieldsTable));
    }

    void triesSoundAgainInTheFormatOfTheFile()
    {
        const TestPlaces places;
        QFile tool(places.file(u"resources/ffmpeg"_s,
                               "#!/bin/sh\ncase \"$*\" in\n*'-f mpeg '*) echo done ;;\n"
                               "*) echo 'Error reading header: 5' ;;\nesac\n"));
        QVERIFY(tool.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
        const QByteArray pack("\x00\x00\x01\xba\x44\x00\x04\x00\x04\x01", 10);
        QVERIFY(isFfmpegSuccessAudio(places.file(u"a.mpg"_s, pack)));
        QVERIFY(!isFfmpegSuccessAudio(places.file(u"b.mpg"_s, "letter")));
    }

    void answersWithoutASource()
    {
        const QString nowhere = m_folder.filePath(u"MPEG"_s);
        QCOMPARE(durationM2v(nowhere), 1);
        QCOMPARE(durationOfHead(nowhere, 9), 1);
        QVERIFY(ffVfIdet(nowhere).isNull());
        QVERIFY(!isFfmpegSuccessAudio(nowhere));
        QVERIFY(forceFormat(nowhere, {}).isNull());
    }
};

QTEST_GUILESS_MAIN(FfProbesTest)
#include "test_ffProbes.moc"
