#include "analysis/ffReport.h"
#include "analysis/ffReportVerdicts.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

QByteArray stored(const QString &name)
{
    QFile file(QStringLiteral(VIGNAR_TEST_DATA "/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// What some version of ffmpeg printed about a source of make-reports.sh.
QString storedReport(const QString &name)
{
    return QString::fromUtf8(stored(name));
}

QStringList storedReports()
{
    return QDir(QStringLiteral(VIGNAR_TEST_DATA)).entryList({u"*.txt"_s});
}

bool isSuccess(const QString &path, const QString &report)
{
    return isFfmpegSuccess(withoutMetadata(withoutSourcePath(report, path)));
}

/// A report whose input block holds the lines.
QString reportOf(const QStringList &lines)
{
    return u"banner\nInput #0, mpeg, from 'a.mpg':\n"_s + lines.join(u'\n') +
           u"\nAt least one output file must be specified\n"_s;
}

/// The facts of a source, null for an absent key, with what a version says differently.
/// Nothing for a source that the version cannot read.
std::optional<Dico> expectedFacts(const QString &source, const QString &version)
{
    static const Dico table =
        QJsonDocument::fromJson(stored(u"expected.json"_s)).toVariant().toMap();
    Dico facts = table.value(source).toMap();
    const Dico except = facts.take(u"except"_s).toMap();
    if (!except.contains(version))
        return facts;
    if (except.value(version).isNull())
        return std::nullopt;
    facts.insert(except.value(version).toMap());
    return facts;
}

/// The pixel format is kept with as much of what is said about it as has no comma in it; of
/// more, its last piece alone.
bool isChroma(const QString &actual, const QString &expected)
{
    return actual.section(u'(', 0, 0) == expected ||
           (actual.endsWith(u')') && !actual.contains(u'('));
}

void compareFacts(const Dico &actual, const Dico &expected)
{
    QVERIFY(!expected.isEmpty());
    for (auto fact = expected.cbegin(); fact != expected.cend(); ++fact) {
        const QVariant value = actual.value(fact.key());
        const bool isAsExpected = fact->isNull() ? !value.isValid()
                                  : fact.key().endsWith(u"_chroma")
                                      ? isChroma(value.toString(), fact->toString())
                                      : value == *fact;
        QVERIFY2(isAsExpected, qPrintable(fact.key() + u" is "_s + value.toString()));
    }
}

/// The entries are those of a JSON object with "'" for the quotes.
void compareEntries(const Dico &actual, const QByteArray &expected)
{
    const QByteArray json = "{" + QByteArray(expected).replace('\'', '"') + "}";
    compareFacts(actual, QJsonDocument::fromJson(json).toVariant().toMap());
}

} // namespace

class FfReportTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsEveryVersion_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("version");
        QTest::addColumn<QString>("level");
        static const QRegularExpression name(u"^(.*)\\.(\\d+\\.\\d+)\\.(info|debug)\\.txt$"_s);
        for (const QString &file : storedReports()) {
            const QRegularExpressionMatch match = name.match(file);
            QTest::newRow(qPrintable(file))
                << match.captured(1) << match.captured(2) << match.captured(3);
        }
    }
    void readsEveryVersion()
    {
        QFETCH(QString, source);
        QFETCH(QString, version);
        QFETCH(QString, level);
        const QString report = storedReport(QString::fromLatin1(QTest::currentDataTag()));
        auto infos = parseFfReport(report);
        const auto expected = expectedFacts(source, version);
        QCOMPARE(infos.has_value(), expected.has_value());
        // The other level is of runs that write a file, which one of the versions cannot.
        if (level == u"info")
            QCOMPARE(isSuccess(u"/tmp/vignar-reports/"_s + source, report), expected.has_value());
        if (!expected)
            return;
        if (const auto chapters = ffChapters(report))
            write(*infos, Keys::chapters, QVariantList(chapters->cbegin(), chapters->cend()));
        compareFacts(*infos, *expected);
    }

    void readsLinesOfEveryVersion_data()
    {
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const char *name, const QStringList &lines, const char *expected) {
            QTest::newRow(name) << lines << QByteArray(expected);
        };
        const QString size = u"Stream #0:0: Video: h264, yuv420p, 720x480, "_s;
        row("bare channel count",
            {u"Stream #0:1: Audio: pcm_s16le, 48000 Hz, 6 channels, s16, 1536 kb/s"_s},
            "'a0_channels': null, 'a0_bitrate': 1536");
        row("PCM in the guise of AAC, on the first audio stream alone",
            {u"Stream #0:1: Audio: aac, 96000 Hz, 5.1, fltp"_s,
             u"Stream #0:2: Audio: aac, 96000 Hz, 5.1, fltp"_s},
            "'a0_codec': 'pcm_bluray', 'a0_rate': 48000, 'a0_channels': 2, 'a0_bitrate': 1536,"
            "'a0_force': 1, 'a1_codec': 'aac', 'a1_rate': 96000");
        row("film with pulldown", {size + u"23.98 fps, 59.94 tbr, 1k tbn, 50 tbc (default)"_s},
            "'v0_fps': 29.97, 'v0_tbc': 50.0");
        row("fields of video", {size + u"29.97 fps, 59.94 tbr, 1k tbc"_s},
            "'v0_fps': 59.94, 'v0_tbc': 1.0");
        row("unknown aspect, later corrected",
            {u"Stream #0:0: Video: h264, yuv420p, 720x576 [SAR 0:1 DAR 0:1], 25 tbr"_s,
             u"Stream #0:1: Video: h264, 720x576 [PAR 64:45 DAR 16:9], PAR 1:1 DAR 5:4"_s},
            "'v0_par': null, 'v0_dar': null, 'v0_width': 720, 'v1_par': '1:1', 'v1_dar': '5:4'");
        row("an x that is no size",
            {u"Stream #0:0, 1, 1/25: Video: rawvideo, 1 reference frame (I420 / "
             "0x30323449), xyz12le, 8x6, 25 tbr, 1x2x, 0x7"_s},
            "'v0_codec': 'rawvideo', 'v0_width': 8, 'v0_height': 6");
        row("protected",
            {u"Stream #0:0: Video: none (drmi / 0x696D7264), 640x480"_s,
             u"Stream #0:1: Audio: aac (drms / 0x736D7264), 44100 Hz"_s},
            "'v0_codec': 'drmi', 'a0_codec': 'drms'");
        row("cover before the movie",
            {u"Stream #0:0: Video: png, rgb24, 9x9, 90k tbr (attached pic)"_s, size + u"25 tbr"_s},
            "'v0_codec': 'h264', 'v1_codec': 'png'");
        row("words of the source among ffmpeg's",
            {u"    title           : Input #0, Output #0, Duration: 9:00:00"_s,
             u"    comment         : Stream #0:9: Video: x, 1x1, rotation of 90"_s,
             size + u"25 tbr"_s},
            "'wrapper': 'mpeg', 'w_duration': null, 'v0_width': 720, 'v1_codec': null");
        row("colours beside what else is said of the pixels",
            {u"Stream #0:0, 1, 1/25: Video: ffv1, 1 reference frame (FFV1 / 0x31564646), "
             "gbrp16le(10 bpc, pc, gbr/unknown/iec61966-2-1, left), 64x48, 25 tbr"_s,
             u"Stream #0:1: Video: h264 (High), yuv420p(bottom coded first (swapped)), 64x48"_s,
             u"Stream #0:2: Video: h264 (High), yuv420p(smpte170m, top first), 64x48"_s,
             u"Stream #0:3: Video: h264 (tv, bt709), yuv420p, 64x48 (pc, bt709)"_s},
            "'v0_range': 'pc', 'v0_matrix': 'gbr', 'v0_primaries': null,"
            "'v0_transfer': 'iec61966-2-1', 'v1_matrix': null, 'v2_range': null,"
            "'v2_transfer': 'smpte170m', 'v3_range': null, 'v3_matrix': null");
        row("a cover that is not called one",
            {u"Stream #0:0: Video: mjpeg, yuvj420p(pc), 9x9, 90k tbr, 90k tbn, 90k tbc"_s,
             u"Stream #0:1: Video: mjpeg, yuvj420p(pc), 64x48, 25 fps, 90k tbr, 90k tbn"_s},
            "'v0_id': 1, 'v1_id': 0");
        row("less than a second", {u"  Duration: 00:00:00.48, start: -0.007000, bitrate: 9 kb/s"_s},
            "'w_duration': 0.48, 'w_offset': -0.007");
        row("clocks for rates",
            {size + u"1k tbr, 1k tbn"_s, size + u"29.97 fps, 600 tbr, 600 tbn"_s,
             size + u"239.76 fps, 240 tbr, 90k tbn"_s, size + u"1k fps, 1k tbr, 16k tbn"_s,
             size + u"90k tbr, 90k tbn (attached pic)"_s, size + u"120 tbr, 1k tbn"_s},
            "'v0_fps': null, 'v1_fps': null, 'v2_fps': 240, 'v3_fps': 1000, 'v4_fps': 120,"
            "'v5_fps': null");
        row("variable bit rate of MPEG",
            {u"Stream #0:0: Video: mpeg1video, yuv420p(tv), 64x48, 104857 kb/s, 25 fps, 25 tbr"_s,
             u"Stream #0:1: Video: rawvideo, yuv420p, 64x48, 104857 kb/s, 25 fps, 25 tbr"_s},
            "'v0_bitrate': null, 'v1_bitrate': 104857");
        row("coloured", {u"\x1b[0m  \x1b[1;35mStream #0:0\x1b[0m: Video: h264, 64x48, 25 tbr"_s},
            "'v0_width': 64, 'wrapper': 'mpeg'");
        row("nothing known of the pixels", {u"Stream #0:0: Video: h264, none, 25 fps, 25 tbr"_s},
            "'v0_chroma': null, 'v0_pixelFormat': null, 'v0_fps': 25");
        row("duration beyond the integers", {u"  Duration: 99999999:00:00.00"_s},
            "'w_duration': 2147483647");
        row("duration unknown", {u"  Duration: N/A, start: -1.500000, bitrate: N/A"_s},
            "'w_duration': null, 'w_offset': -1.5, 'w_bitrate': null");
    }
    void readsLinesOfEveryVersion()
    {
        QFETCH(QStringList, lines);
        QFETCH(QByteArray, expected);
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
        for (const QString &name :
             {u"/v/a\nOutput #0, b.mpg"_s, u"/v/a\x02\nInput #0, x, b.mpg"_s}) {
            const QString logged = QString(name).replace(u'\x02', u'?');
            const QString opened = u"Input file #0 (%1):\n"_s.arg(logged);
            const auto named = ffInfos(name, QString(last).replace(u"a.mpg"_s, logged) + opened);
            QCOMPARE(read(*named, Keys::v_width, 0), 64);
        }
    }

    void keepsChaptersTwentySecondsApart()
    {
        const QString line = u"    Chapter #0:0: start %1, end 99\n"_s;
        QCOMPARE(ffChapters(line.arg(5) + line.arg(25) + line.arg(25.5) + line.arg(46)),
                 (QList<double>{5, 25.5, 46}));
        QVERIFY(!ffChapters(u"  Chapter #0:0: start\n title : Chapter #1: start 2, end 3"_s));
    }

    void groupsPropertiesByStream()
    {
        Dico infos = *parseFfReport(storedReport(u"five-languages.mkv.5.1.info.txt"_s));
        infos.insert(u"a2_offsetMs"_s, 40.0);
        const auto types = ffStreamId(infos);
        QCOMPARE(types->keys(), (QStringList{u"a"_s, u"v"_s}));
        compareEntries(types->value(u"a"_s).toMap().value(u"1"_s).toMap(),
                       "'id': 2, 'codec': 'ac3', 'bitrate': 448, 'channels': 6, 'lang': 'fre',"
                       "'rate': 48000, 'offsetMs': 40.0");
        QVERIFY(!ffStreamId({{u"w_duration"_s, 3}, {u"x0_id"_s, 1}, {u"_id"_s, 1}}));
    }

    void tellsFailuresFromTitles()
    {
        const QString path = u"/v/error 1.mp4"_s;
        const QString from = u"Input #0, mpeg, from '%1':\n"_s;
        QVERIFY(isSuccess(path, from.arg(path)));
        QVERIFY(isSuccess(path, from.arg(u"error 1.mp4"_s)));
        QVERIFY(isSuccess(path, from + u"    title           : Trial and error 2"_s));
        QVERIFY(!isSuccess(path, path + u": I/O Error occured"_s));
        QVERIFY(!isSuccess(u"/v/e"_s, u"[mov] Error reading header: 5"_s));
        QVERIFY(!isSuccess(path, QString()));
    }

    void forgivesErrorsBeforeTheFirstKeyFrame()
    {
        const QString error = u"Error while decoding stream #0:0: Invalid data\n"_s;
        for (const QString &report : storedReports().filter(u"midstream.ts"_s))
            QCOMPARE(reportVerdict(storedReport(report)), ReportVerdict::usable);
        QCOMPARE(reportVerdict(error + u"frame=    3 fps=0\rframe=  N/A"_s),
                 ReportVerdict::decodesTooLittle);
        QCOMPARE(reportVerdict(error), ReportVerdict::notCompliant);
        QCOMPARE(reportVerdict(u"segmentation fault"_s), ReportVerdict::notCompliant);
    }

    void replacesTheAspectInAFilterChain()
    {
        const auto replaced = [](const QString &arguments) {
            return ffReplaceSetdar(arguments.split(u' '), u"16/9"_s).join(u' ');
        };
        QCOMPARE(replaced(u"-vf setdar=4/3,yadif -y"_s), u"-vf setdar=16/9,yadif -y"_s);
        QCOMPARE(replaced(u"-vf yadif,setdar=4/3"_s), u"-vf yadif,setdar=16/9"_s);
        QCOMPARE(replaced(u"setdar=1 -vf"_s), u"setdar=1 -vf"_s);
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
        for (const QString &name : storedReports()) {
            const QString report = storedReport(name);
            for (qsizetype end = 0; end < report.size(); end += 61 + report.size() / 64) {
                const QString cut = report.first(end) + u"\nInput #0, "_s + report.sliced(end);
                const auto infos = parseFfReport(cut);
                ffStreamId(infos.value_or(Dico()));
                reportVerdict(cut);
                QVERIFY(infos);
            }
        }
    }

    void readsTheCommentOfTheContainer()
    {
        const QString report =
            u"Input #0, matroska,webm, from 'a':\n  Metadata:\n"
            "    title           : not it\n    COMMENT         : Duration: of two\n"
            "                    : lines\n    ENCODER         : x\n"
            "  Duration: 00:00:12.02, start: 0.000000\n  Stream #0:0: Video: h264, 64x48\n"
            "    Metadata:\n      comment         : of a stream\n"_s;
        const Dico infos = parseFfReport(report).value_or(Dico());
        QCOMPARE(read(infos, Keys::w_comment), u"Duration: of two\nlines"_s);
        QCOMPARE(read(infos, Keys::w_duration), 12);
    }
};

QTEST_GUILESS_MAIN(FfReportTest)
#include "test_ffReport.moc"
