#include "analysis/ffReport.h"
#include "analysis/ffReportVerdicts.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

/// Reports of ffmpeg 5.1 on clips whose properties were read with ffprobe.
QString storedReport(const QString &name)
{
    QFile file(QStringLiteral(VIGNAR_TEST_DATA "/") + name);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// A report whose input block holds the lines.
QString reportOf(const QStringList &lines)
{
    return u"banner\nInput #0, mpeg, from 'a.mpg':\n"_s + lines.join(u'\n') +
           u"\nAt least one output file must be specified\n"_s;
}

/// The expected entries; an invalid value stands for an absent key.
void compareEntries(const Dico &actual, const QVariantMap &expected)
{
    for (auto entry = expected.cbegin(); entry != expected.cend(); ++entry) {
        const QVariant value = actual.value(entry.key());
        QVERIFY2(value == *entry, qPrintable(entry.key() + u" is "_s + value.toString()));
    }
}

const QVariant absent;

} // namespace

class FfReportTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsRealReports_data()
    {
        QTest::addColumn<QVariantMap>("expected");
        QTest::newRow("h264.mp4.debug.txt")
            << QVariantMap{{u"wrapper"_s, u"mov,mp4,m4a,3gp,3g2,mj2"_s},
                           {u"w_duration"_s, 3},
                           {u"w_offset"_s, 0.0},
                           {u"w_bitrate"_s, 121},
                           {u"v0_id"_s, 0},
                           {u"v0_lang"_s, u"und"_s},
                           {u"v0_codec"_s, u"h264"_s},
                           {u"v0_width"_s, 320},
                           {u"v0_height"_s, 240},
                           {u"v0_par"_s, u"1:1"_s},
                           {u"v0_dar"_s, u"4:3"_s},
                           {u"v0_bitrate"_s, 41},
                           {u"v0_fps"_s, 25.0},
                           {u"v0_rotation"_s, absent},
                           {u"v1_codec"_s, absent},
                           {u"a0_id"_s, 1},
                           {u"a0_codec"_s, u"aac"_s},
                           {u"a0_rate"_s, 44100},
                           {u"a0_channels"_s, 1},
                           {u"a0_bitrate"_s, 69},
                           {u"a0_force"_s, absent}};
        QTest::newRow("chapters.mkv.info.txt")
            << QVariantMap{{u"wrapper"_s, u"matroska,webm"_s},
                           {u"w_duration"_s, 60},
                           {u"v0_height"_s, 180},
                           {u"v0_chroma"_s, u"yuv420p(progressive)"_s},
                           {u"a0_lang"_s, u"eng"_s},
                           {u"a1_lang"_s, u"fre"_s},
                           {u"a1_codec"_s, u"ac3"_s},
                           {u"a1_channels"_s, 6},
                           {u"a1_bitrate"_s, 448},
                           {u"s0_id"_s, 3},
                           {u"s0_lang"_s, u"eng"_s},
                           {u"s0_lang+"_s, u"English SDH"_s},
                           {u"s0_codec"_s, u"subrip"_s},
                           {u"s1_lang"_s, u"ger"_s},
                           {u"s1_lang+"_s, absent}};
        QTest::newRow("pal.vob.debug.txt")
            << QVariantMap{{u"w_offset"_s, 0.5342},   {u"v0_codec"_s, u"mpeg2video"_s},
                           {u"v0_width"_s, 720},      {u"v0_height"_s, 576},
                           {u"v0_par"_s, u"64:45"_s}, {u"v0_dar"_s, u"16:9"_s},
                           {u"v0_bitrate"_s, absent}, {u"a0_id"_s, 1},
                           {u"a0_lang"_s, absent},    {u"a0_channels"_s, 6}};
        QTest::newRow("turned.mp4.debug.txt") << QVariantMap{{u"v0_width"_s, 576},
                                                             {u"v0_height"_s, 720},
                                                             {u"v0_par"_s, u"45:64"_s},
                                                             {u"v0_dar"_s, u"9:16"_s},
                                                             {u"v0_rotation"_s, 270}};
        QTest::newRow("cover.mp4.debug.txt") << QVariantMap{{u"v0_codec"_s, u"h264"_s},
                                                            {u"v0_width"_s, 320},
                                                            {u"v1_codec"_s, u"mjpeg"_s},
                                                            {u"v1_width"_s, 200},
                                                            {u"v1_id"_s, 2}};
        QTest::newRow("cover.mp3.debug.txt") << QVariantMap{
            {u"v0_codec"_s, absent}, {u"v1_width"_s, 200}, {u"a0_codec"_s, u"mp3"_s}};
        QTest::newRow("prores.mov.debug.txt") << QVariantMap{
            {u"v0_codec"_s, u"prores"_s}, {u"v0_width"_s, 640}, {u"v0_dar"_s, u"16:9"_s},
            {u"v0_bitrate"_s, 8029},      {u"v0_fps"_s, 24.0},  {u"a0_channels"_s, 6},
            {u"a1_codec"_s, absent}};
        QTest::newRow("silent.3gp.debug.txt") << QVariantMap{{u"v0_width"_s, 176},
                                                             {u"v0_par"_s, u"1:1"_s},
                                                             {u"v0_dar"_s, u"11:9"_s},
                                                             {u"a0_codec"_s, absent}};
        QTest::newRow("vp8.webm.debug.txt") << QVariantMap{
            {u"v0_codec"_s, u"vp8"_s}, {u"v0_dar"_s, u"4:3"_s}, {u"a0_lang"_s, u"spa"_s}};
        QTest::newRow("film.avi.debug.txt") << QVariantMap{{u"v0_codec"_s, u"mpeg4"_s},
                                                           {u"v0_fps"_s, 23.98},
                                                           {u"v0_bitrate"_s, 219},
                                                           {u"a0_codec"_s, u"mp3"_s}};
        QTest::newRow("transport.ts.info.txt") << QVariantMap{{u"wrapper"_s, u"mpegts"_s},
                                                              {u"w_offset"_s, 1.429089},
                                                              {u"v0_width"_s, 320},
                                                              {u"a0_lang"_s, u"deu"_s},
                                                              {u"a0_codec"_s, u"mp2"_s}};
        QTest::newRow("pal.dv.info.txt") << QVariantMap{{u"v0_codec"_s, u"dvvideo"_s},
                                                        {u"v0_bitrate"_s, 25000},
                                                        {u"v0_par"_s, u"16:15"_s},
                                                        {u"v0_chroma"_s, u"yuv420p"_s},
                                                        {u"a0_channels"_s, 2}};
        QTest::newRow("midstream.ts.debug.txt") << QVariantMap{
            {u"v0_codec"_s, u"h264"_s}, {u"v0_width"_s, absent}, {u"v0_fps"_s, 25.0}};
    }
    void readsRealReports()
    {
        QFETCH(QVariantMap, expected);
        const auto infos =
            parseFfReport(storedReport(QString::fromLatin1(QTest::currentDataTag())));
        QVERIFY(infos);
        compareEntries(*infos, expected);
    }

    void readsLinesOfEveryVersion_data()
    {
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<QVariantMap>("expected");
        const QString size = u"Stream #0:0: Video: h264, yuv420p, 720x480, "_s;
        QTest::newRow("audio with language")
            << QStringList{u"Stream #0:1(eng): Audio: ac3, 48000 Hz, 5.1(side), fltp, 448 kb/s"_s}
            << QVariantMap{{u"a0_id"_s, 1},           {u"a0_lang"_s, u"eng"_s},
                           {u"a0_codec"_s, u"ac3"_s}, {u"a0_rate"_s, 48000},
                           {u"a0_channels"_s, 6},     {u"a0_bitrate"_s, 448}};
        QTest::newRow("bare channel count")
            << QStringList{u"Stream #0:1: Audio: pcm_s16le, 48000 Hz, 6 channels, s16, 1536 kb/s"_s}
            << QVariantMap{{u"a0_channels"_s, absent}, {u"a0_bitrate"_s, 1536}};
        QTest::newRow("PCM in the guise of AAC, on the first audio stream alone")
            << QStringList{u"Stream #0:1: Audio: aac, 96000 Hz, 5.1, fltp"_s,
                           u"Stream #0:2: Audio: aac, 96000 Hz, 5.1, fltp"_s}
            << QVariantMap{{u"a0_codec"_s, u"pcm_bluray"_s},
                           {u"a0_rate"_s, 48000},
                           {u"a0_channels"_s, 2},
                           {u"a0_bitrate"_s, 1536},
                           {u"a0_force"_s, 1},
                           {u"a1_codec"_s, u"aac"_s},
                           {u"a1_rate"_s, 96000}};
        QTest::newRow("film with pulldown")
            << QStringList{size + u"23.98 fps, 59.94 tbr, 1k tbn, 50 tbc (default)"_s}
            << QVariantMap{{u"v0_fps"_s, 29.97}, {u"v0_tbc"_s, 50.0}};
        QTest::newRow("fields of video") << QStringList{size + u"29.97 fps, 59.94 tbr, 1k tbc"_s}
                                         << QVariantMap{{u"v0_fps"_s, 59.94}, {u"v0_tbc"_s, 1.0}};
        QTest::newRow("unknown aspect, later corrected")
            << QStringList{u"Stream #0:0: Video: h264, yuv420p, 720x576 [SAR 0:1 DAR 0:1], 25 tbr"_s,
                           u"Stream #0:1: Video: h264, 720x576 [PAR 64:45 DAR 16:9], PAR 1:1 DAR 5:4"_s}
            << QVariantMap{{u"v0_par"_s, absent},
                           {u"v0_dar"_s, absent},
                           {u"v0_width"_s, 720},
                           {u"v1_par"_s, u"1:1"_s},
                           {u"v1_dar"_s, u"5:4"_s}};
        QTest::newRow("an x that is no size")
            << QStringList{u"Stream #0:0, 1, 1/25: Video: rawvideo, 1 reference frame (I420 / "
                           "0x30323449), xyz12le, 8x6, 25 tbr, 1x2x, 0x7"_s}
            << QVariantMap{{u"v0_codec"_s, u"rawvideo"_s}, {u"v0_width"_s, 8}, {u"v0_height"_s, 6}};
        QTest::newRow("protected")
            << QStringList{u"Stream #0:0: Video: none (drmi / 0x696D7264), 640x480"_s,
                           u"Stream #0:1: Audio: aac (drms / 0x736D7264), 44100 Hz"_s}
            << QVariantMap{{u"v0_codec"_s, u"drmi"_s}, {u"a0_codec"_s, u"drms"_s}};
        QTest::newRow("cover before the movie")
            << QStringList{u"Stream #0:0: Video: png, rgb24, 9x9, 90k tbr (attached pic)"_s,
                           size + u"25 tbr"_s}
            << QVariantMap{{u"v0_codec"_s, u"h264"_s}, {u"v1_codec"_s, u"png"_s}};
        QTest::newRow("words of the source among ffmpeg's")
            << QStringList{u"    title           : Input #0, Output #0, Duration: 9:00:00"_s,
                           u"    comment         : Stream #0:9: Video: x, 1x1, rotation of 90"_s,
                           size + u"25 tbr"_s}
            << QVariantMap{{u"wrapper"_s, u"mpeg"_s},
                           {u"w_duration"_s, absent},
                           {u"v0_width"_s, 720},
                           {u"v1_codec"_s, absent}};
        QTest::newRow("less than a second")
            << QStringList{u"  Duration: 00:00:00.48, bitrate: 9 kb/s"_s}
            << QVariantMap{{u"w_duration"_s, 1}};
        QTest::newRow("duration unknown")
            << QStringList{u"  Duration: N/A, start: -1.500000, bitrate: N/A"_s}
            << QVariantMap{
                   {u"w_duration"_s, absent}, {u"w_offset"_s, -1.5}, {u"w_bitrate"_s, absent}};
    }
    void readsLinesOfEveryVersion()
    {
        QFETCH(QStringList, lines);
        QFETCH(QVariantMap, expected);
        compareEntries(parseFfReport(reportOf(lines)).value_or(Dico()), expected);
    }

    void followsTheDisplayMatrix_data()
    {
        QTest::addColumn<QString>("sideData");
        QTest::addColumn<int>("turn");
        QTest::newRow("90") << u"displaymatrix: rotation of 90.00 degrees"_s << 270;
        QTest::newRow("-90, tag as well")
            << u"rotate          : 90\n    Side data:\n  displaymatrix: rotation of -90.00 degrees"_s
            << 90;
        QTest::newRow("upside down") << u"displaymatrix: rotation of -180.00 degrees"_s << 180;
        QTest::newRow("none") << u"displaymatrix: rotation of -0.00 degrees"_s << 0;
        QTest::newRow("not in quarters") << u"displaymatrix: rotation of 45.00 degrees"_s << 0;
        QTest::newRow("mirrored") << u"displaymatrix: rotation of nan degrees"_s << 0;
        QTest::newRow("a tag that ffmpeg does not follow") << u"ROTATE          : 90"_s << 0;
        QTest::newRow("of the sound")
            << u"Stream #0:1: Audio: aac\n displaymatrix: rotation of 90.00 degrees"_s << 0;
    }
    void followsTheDisplayMatrix()
    {
        QFETCH(QString, sideData);
        QFETCH(int, turn);
        const auto infos =
            parseFfReport(reportOf({u"Stream #0:0: Video: h264, 64x48, 25 tbr"_s, sideData}));
        QVERIFY(infos);
        QCOMPARE(read(*infos, Keys::v_rotation, 0).value_or(0), turn);
        QCOMPARE(read(*infos, Keys::v_width, 0), turn % 180 == 0 ? 64 : 48);
    }

    void readsTheLastInputAlone()
    {
        const QString first = reportOf({u"Stream #0:0: Video: flv1, 32x24, 25 tbr"_s});
        const QString last = reportOf({u"Stream #0:0: Video: h264, 64x48, 25 tbr"_s});
        const auto infos = parseFfReport(first + last + u"Stream #0:0: Video: wrapped_avframe"_s);
        QCOMPARE(read(*infos, Keys::v_codec, 0), u"h264"_s);
        QVERIFY(!infos->contains(Keys::v_codec(1)));
        QVERIFY(!parseFfReport(u"moov atom not found"_s));
        // A name that closes its own block, if its report were taken at its word.
        const QString name = u"/v/a\nOutput #0, b.mpg"_s;
        const auto named = ffInfos(name, QString(last).replace(u"a.mpg"_s, name));
        QCOMPARE(read(*named, Keys::v_width, 0), 64);
    }

    void keepsChaptersTwentySecondsApart()
    {
        const auto starts = ffChapters(storedReport(u"chapters.mkv.info.txt"_s));
        QCOMPARE(starts.value_or(QList<double>()), (QList<double>{0, 25, 46}));
        QVERIFY(!ffChapters(u"  Chapter #0:0: start\n title : Chapter #1: start 2, end 3"_s));
    }

    void groupsPropertiesByStream()
    {
        Dico infos = *parseFfReport(storedReport(u"chapters.mkv.info.txt"_s));
        infos.insert(u"a2_offsetMs"_s, 40.0);
        const auto types = ffStreamId(infos);
        QCOMPARE(types->keys(), (QStringList{u"a"_s, u"s"_s, u"v"_s}));
        const QVariantMap second{{u"id"_s, 2},         {u"codec"_s, u"ac3"_s}, {u"bitrate"_s, 448},
                                 {u"channels"_s, 6},   {u"lang"_s, u"fre"_s},  {u"rate"_s, 44100},
                                 {u"offsetMs"_s, 40.0}};
        QCOMPARE(types->value(u"a"_s).toMap().value(u"1"_s).toMap(), second);
        QVERIFY(!ffStreamId({{u"w_duration"_s, 3}, {u"x0_id"_s, 1}, {u"_id"_s, 1}}));
    }

    void tellsFailuresFromTitles_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("report");
        QTest::addColumn<bool>("isSuccess");
        const QString from = u"Input #0, mpeg, from '%1':\n"_s;
        QTest::newRow("name") << u"/v/error 1.mp4"_s << from.arg(u"/v/error 1.mp4"_s) << true;
        QTest::newRow("name alone") << u"/w/error 1.mp4"_s << from.arg(u"error 1.mp4"_s) << true;
        QTest::newRow("title") << u"/v/a"_s << from + u"    title           : Trial and error 2"_s
                               << true;
        QTest::newRow("failure of such a name")
            << u"/v/error 1.mp4"_s << u"/v/error 1.mp4: I/O Error occured"_s << false;
        QTest::newRow("name of one letter")
            << u"/v/e"_s << u"[mov] Error reading header: 5"_s << false;
        QTest::newRow("nothing") << u"/v/a"_s << QString() << false;
    }
    void tellsFailuresFromTitles()
    {
        QFETCH(QString, path);
        QFETCH(QString, report);
        QTEST(isFfmpegSuccess(withoutMetadata(withoutSourcePath(report, path))), "isSuccess");
    }

    void forgivesErrorsBeforeTheFirstKeyFrame()
    {
        const QString error = u"Error while decoding stream #0:0: Invalid data\n"_s;
        QCOMPARE(reportVerdict(storedReport(u"midstream.ts.debug.txt"_s)), ReportVerdict::usable);
        QCOMPARE(reportVerdict(error + u"frame=    3 fps=0\rframe=  N/A"_s),
                 ReportVerdict::decodesTooLittle);
        QCOMPARE(reportVerdict(error), ReportVerdict::notCompliant);
        QCOMPARE(reportVerdict(u"segmentation fault"_s), ReportVerdict::notCompliant);
    }

    void replacesTheAspectInAFilterChain_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QStringList>("replaced");
        QTest::newRow("first filter") << QStringList{u"-vf"_s, u"setdar=4/3,yadif"_s, u"-y"_s}
                                      << QStringList{u"-vf"_s, u"setdar=16/9,yadif"_s, u"-y"_s};
        QTest::newRow("last filter") << QStringList{u"-vf"_s, u"yadif,setdar=4/3"_s}
                                     << QStringList{u"-vf"_s, u"yadif,setdar=16/9"_s};
        const QStringList untouched{u"setdar=1"_s, u"-vf"_s};
        QTest::newRow("no chain") << untouched << untouched;
    }
    void replacesTheAspectInAFilterChain()
    {
        QFETCH(QStringList, arguments);
        QTEST(ffReplaceSetdar(arguments, u"16/9"_s), "replaced");
    }

    void takesKeyFrameTimesInTextOrder()
    {
        const QString trace = u"[Parsed_showinfo_0 @ 0x1] n:0 pts_time:%1 iskey:%2 type:I\n"_s;
        const QString early = trace.arg(u"1.0"_s, u"0"_s);
        QCOMPARE(showinfoIntra(early + trace.arg(u"9.5"_s, u"1"_s) + trace.arg(u"10.2"_s, u"1"_s)),
                 10.2F);
        QCOMPARE(showinfoIntra(early), 0.0F);
    }

    void survivesReportsCutAnywhere()
    {
        const QDir folder(QStringLiteral(VIGNAR_TEST_DATA));
        for (const QString &name : folder.entryList(QDir::Files)) {
            const QString report = storedReport(name);
            for (qsizetype end = 0; end < report.size(); end += 61) {
                const QString cut = report.first(end) + u"\nInput #0, "_s + report.sliced(end);
                const auto infos = parseFfReport(cut);
                ffStreamId(infos.value_or(Dico()));
                reportVerdict(cut);
                QVERIFY(infos);
            }
        }
    }
};

QTEST_GUILESS_MAIN(FfReportTest)
#include "test_ffReport.moc"
