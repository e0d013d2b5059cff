#include "analysis/durationRule.h"
#include "analysis/ffReport.h"
#include "analysis/sourceAnalysis.h"
#include "classShared/sourceDico.h"
#include "settings/alerts.h"
#include "settings/stringTables.h"
#include "tasks/toolPlaces.h"
#include "tasks/workFolder.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

/// A movie framework that answers what the test sets, and notes what it is asked.
class FakeFramework : public MovieFramework
{
public:
    Dico movie;
    Dico answers;
    Dico asked;

    Dico inspect(const QString &) override
    {
        count(u"inspections"_s);
        return movie;
    }
    double measureFrameRate(const QString &path, RateMeasurement mode) override
    {
        const bool isExtract = mode == RateMeasurement::extract && QFile::exists(path);
        return answers.value(isExtract ? u"extractRate"_s : u"rate"_s).toDouble();
    }
    bool writeExtract(const QString &, const QString &destination) override
    {
        count(u"extracts"_s);
        m_extract = destination;
        return QFile(destination).open(QIODevice::WriteOnly);
    }
    bool canDecode(const QString &) override { return !answers.value(u"fails"_s).toBool(); }
    std::unique_ptr<OpenedMovie> openMovie(const QString &) override { return {}; }
    bool hasMpeg2Playback() const override { return answers.value(u"playback"_s).toBool(); }
    bool hasMpeg2Demultiplexer() const override { return answers.value(u"demux"_s).toBool(); }

    bool isExtractLeft() const { return QFile::exists(m_extract); }

private:
    void count(const QString &what) { asked[what] = asked.value(what).toInt() + 1; }

    QString m_extract;
};

/// A source, what its readers say of it, and what is to come of it. The dictionaries are JSON
/// objects with "'" for the quotes and without their braces.
struct Source {
    QString file = u"a.avi"_s;
    /// Of the file, which is sparse.
    int megabytes = 0;
    QString wrapper = u"avi"_s;
    QString duration = u"00:00:09.00, bitrate: 8 kb/s"_s;
    QString video = u"Video: h264, yuv420p, 64x48, 25 tbr"_s;
    /// What ffmpeg says beside the description of the input.
    QString messages = {};
    QString fields = u"PFF"_s;
    DecodedPicture decoded = {};
    /// Seconds that the measurement finds, of the head where the file is large.
    int measured = 1;
    QByteArray mp = {};
    /// Null: there is no framework.
    QByteArray movie = {};
    QByteArray framework = {};
    QString testPictures = {};
    /// Facts of the record, or "refused" with the key of the reason. Also what was asked of the
    /// framework, "grabbed" and the seconds of the "notices".
    QByteArray expected;
};

Dico parsed(QByteArray json)
{
    const QByteArray text = "{" + json.replace('\'', '"') + "}";
    const QJsonDocument document = QJsonDocument::fromJson(text);
    if (!document.isObject())
        qFatal("not JSON: %s", text.constData());
    return document.toVariant().toMap();
}

class NoticeRecorder : public AlertPresenter
{
public:
    explicit NoticeRecorder(QList<AlertRequest> *shown) : m_shown(shown) {}
    AlertAnswer present(const AlertRequest &request) override
    {
        m_shown->append(request);
        return {};
    }

private:
    QList<AlertRequest> *m_shown;
};

QString reportOf(const QString &video, const QString &duration = u"00:00:09.00"_s)
{
    return u"\nInput #0, avi, from 'a':\n  Duration: %1, bitrate: 8 kb/s\n  Stream #0:0: %2\n"_s
        .arg(duration, video);
}

QString order(const QString &key)
{
    return localised(key, fieldsTable);
}

QString reportOf(const Source &source, const QString &path)
{
    return u"Input #0, %1, from '%2':\n  Duration: %3\n  Stream #0:0: %4\n%5\n"_s.arg(
        source.wrapper, path, source.duration, source.video, source.messages);
}

} // namespace

Q_DECLARE_METATYPE(Source)

class SourceAnalysisTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    QList<AlertRequest> m_notices;
    FakeFramework m_framework;

    QString emptyFile(const QString &name, qint64 size = 0)
    {
        const QString path = m_folder.filePath(name);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.resize(size) ? path : QString();
    }

    Result<SourceDico> analysed(const QString &name, const QString &report,
                                AnalysisReaders readers = {}, const QString &fields = {})
    {
        return analyseSource({emptyFile(name), report, fields, {}}, readers);
    }

private Q_SLOTS:
    void init()
    {
        m_notices.clear();
        m_framework.movie = m_framework.answers = m_framework.asked = {};
        setAlertPresenter(std::make_unique<NoticeRecorder>(&m_notices));
    }
    void initTestCase()
    {
        setInterfaceLanguage(u"en"_s);
        QVERIFY(setUpWorkFolder(u"test"_s));
    }
    void cleanupTestCase() { setAlertPresenter(nullptr); }

    void reconcilesTheReaders_data();
    void reconcilesTheReaders();

    void saysWhyASourceIsRefused()
    {
        const QString h264 = reportOf(u"Video: h264, 64x48, 25 tbr"_s);
        QCOMPARE(analyseSource({m_folder.filePath(u"none.avi"_s), h264, {}, {}}, {}).reason(),
                 localised(u"V_reason_missing"_s));
        QCOMPARE(analysed(u"a.ASX"_s, h264).reason(), localised(u"V_reason_asx"_s));
        QCOMPARE(analysed(u"a.avi"_s, u"no report"_s).reason(),
                 localised(u"V_reason_unreadable"_s));
        QCOMPARE(analysed(u"a.avi"_s, reportOf(u"Video: none (drmi / 0x1), 64x48"_s)).reason(),
                 localised(u"V_reason_protected"_s));
        for (const QString &sound : {u"Audio: mp3, mono"_s, u"Video: png, 9x9 (attached pic)"_s})
            QCOMPARE(analysed(u"a.avi"_s, reportOf(sound)).reason(),
                     localised(u"V_reason_noPicture"_s));
        QVERIFY(m_notices.isEmpty());
    }

    void ffmpegAloneIsTheDecoder()
    {
        const auto absent = makeAbsentMovieFramework();
        AnalysisReaders readers;
        readers.movieFramework = absent.get();
        readers.ptsDtsOffsetMs = [](const QString &) { return Dico{{u"a1_offsetMs"_s, 12.0}}; };
        const auto record = analysed(u"sub.dir/a.b, my very long file name.avi"_s,
                                     reportOf(u"Video: h264, 64x48, 25 tbr"_s), readers);
        QVERIFY2(record, qPrintable(record.reason()));
        QCOMPARE(read(*record, Keys::dec), ffmpegDecoder);
        QCOMPARE(read(*record, Keys::decSkip), quickTimeDecoder);
        QCOMPARE(read(*record, Keys::w_duration), 9);
        QCOMPARE(record->value(u"a1_offsetMs"_s), QVariant(12.0));
        QCOMPARE(readStr(*record, Keys::dstFileNameStr), u"a_b, my very long file "_s);
        QCOMPARE(readStr(*record, Keys::dstFolderNameStr),
                 QFileInfo(m_folder.filePath(u"sub.dir"_s)).canonicalFilePath());
    }

    void theFrameworkDecodesWhatFfmpegCannot()
    {
        m_framework.movie = {{Keys::v_height(0), 480},
                             {Keys::v_width(0), 640},
                             {Keys::v_codec(0), u"3ivx"_s},
                             {Keys::w_duration, 7.5}};
        AnalysisReaders readers;
        readers.movieFramework = &m_framework;
        const auto record = analysed(u"a.avi"_s, reportOf(u"Audio: mp3, mono"_s), readers);
        QVERIFY2(record, qPrintable(record.reason()));
        QCOMPARE(read(*record, Keys::dec), quickTimeDecoder);
        QCOMPARE(read(*record, Keys::decSkip), ffmpegDecoder);
        m_framework.answers = {{u"fails"_s, true}};
        QVERIFY(!analysed(u"a.avi"_s, reportOf(u"Audio: mp3, mono"_s), readers));
    }

    void anMpegStreamThatWasReadNeverReachesTheFramework()
    {
        AnalysisReaders readers;
        readers.movieFramework = &m_framework;
        readers.mpegInfoDico = [](const QString &) { return Dico{{Keys::v_fps(0), 29.97}}; };
        const auto record =
            analysed(u"a.m2v"_s, reportOf(u"Video: mpeg2video, 64x48, 25 tbr"_s), readers);
        QCOMPARE(read(*record, Keys::v_fps, 0), 29.97);
        QCOMPARE(read(*record, Keys::decSkip), quickTimeDecoder);
        QVERIFY(m_framework.asked.isEmpty());
    }

    void correctsFieldOrders()
    {
        AnalysisReaders readers;
        readers.idet = [](const QString &) { return order(u"TFF"_s); };
        const auto corrected = [&](const QString &video, const QString &reported) {
            const QString report = reportOf(u"Video: "_s + video);
            const auto record = analysed(u"a.avi"_s, report, readers, order(reported));
            return read(*record, Keys::v_fields, 0);
        };
        QCOMPARE(corrected(u"dvvideo, 720x576"_s, u"PFF"_s), order(u"BFF"_s));
        // DV of high definition, and interlaced DV, are believed.
        QCOMPARE(corrected(u"dvvideo, 1280x720"_s, u"PFF"_s), order(u"PFF"_s));
        QCOMPARE(corrected(u"dvcp, 720x576"_s, u"TFF"_s), order(u"TFF"_s));
        // ProRes is measured.
        QCOMPARE(corrected(u"prores, 1920x1080"_s, u"PFF"_s), order(u"TFF"_s));
        // Motion-JPEG so small is progressive.
        QCOMPARE(corrected(u"mjpeg, 640x480"_s, u"TFF"_s), order(u"PFF"_s));
        QCOMPARE(corrected(u"h264, 1280x720"_s, u"PFF"_s), order(u"PFF"_s));
    }

    void anUnknownDurationIsOneSecondAndToldOnce()
    {
        const auto record =
            analysed(u"a.avi"_s, reportOf(u"Video: h264, 64x48, 25 tbr"_s, u"N/A"_s));
        QCOMPARE(read(*record, Keys::w_duration), 1);
        QCOMPARE(m_notices.size(), 1);
        QCOMPARE(m_notices.constFirst().seconds, 60);
    }

    void measuresWhatStatedDurationsCannotBe_data()
    {
        QTest::addColumn<QString>("container");
        QTest::addColumn<QString>("stated");
        QTest::addColumn<int>("measured");
        QTest::addColumn<double>("expected");
        QTest::newRow("not stated") << u"avi"_s << u"N/A"_s << 3600 << 3600.0;
        QTest::newRow("not measured either") << u"avi"_s << u"N/A"_s << 1 << 1.0;
        QTest::newRow("time stamps jump") << u"mpegts"_s << u"25:07:31.00"_s << 16 << 16.0;
        QTest::newRow("hardly differs") << u"mpegts"_s << u"00:00:17.00"_s << 16 << 17.0;
        QTest::newRow("trusted container") << u"avi"_s << u"25:07:31.00"_s << 16 << 90451.0;
    }

    void measuresWhatStatedDurationsCannotBe()
    {
        QFETCH(QString, container);
        QFETCH(QString, stated);
        QFETCH(int, measured);
        AnalysisReaders readers;
        readers.durationM2v = [measured](const QString &) { return measured; };
        QString report = reportOf(u"Video: h264, 640x360, 25 tbr"_s, stated);
        report.replace(u"#0, avi"_s, u"#0, "_s + container);
        const auto record = analysed(u"a.ts"_s, report, readers);
        QTEST(read(*record, Keys::w_duration).value_or(0), "expected");
    }

    void aRecordingBundleKnowsItsDuration()
    {
        const QString recording = emptyFile(u"Show.eyetv/0001.eyetvr"_s);
        QFile file(recording);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("<key>actual duration</key>\n\t<real>1805.96</real>");
        file.close();
        const auto record =
            analysed(u"Show.eyetv/0001.mpg"_s, reportOf(u"Video: mpeg2video, 64x48, 25 tbr"_s));
        QCOMPARE(read(*record, Keys::w_duration), 1805);
    }

    void theRecordOfATurnedClipIsThatOfItsFrames()
    {
        const QString ffmpeg = ffmpegPath();
        QVERIFY2(!ffmpeg.isEmpty(), "ffmpeg is needed");
        const QString plain = m_folder.filePath(u"plain.mp4"_s);
        const QString clip = m_folder.filePath(u"error 'turned', Input #0.mp4"_s);
        const QString frame = m_folder.filePath(u"frame.png"_s);
        const auto run = [&ffmpeg](const QStringList &arguments) {
            return QProcess::execute(ffmpeg, QStringList{u"-v"_s, u"error"_s, u"-y"_s} + arguments);
        };
        QCOMPARE(run({u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc=size=160x90:duration=1"_s, plain}),
                 0);
        QCOMPARE(
            run({u"-i"_s, plain, u"-c"_s, u"copy"_s, u"-metadata:s:v"_s, u"rotate=90"_s, clip}), 0);
        QCOMPARE(run({u"-i"_s, clip, u"-frames:v"_s, u"1"_s, frame}), 0);

        const auto record = analyseSource({clip, {}, {}, {}}, {});
        QVERIFY2(record, qPrintable(record.reason()));
        const QSize recorded(read(*record, Keys::v_width, 0).value_or(0),
                             read(*record, Keys::v_height, 0).value_or(0));
        QCOMPARE(recorded, QImage(frame).size());
        QCOMPARE(recorded, QSize(90, 160));
    }
};

void SourceAnalysisTest::reconcilesTheReaders_data()
{
    QTest::addColumn<Source>("source");
    const auto row = [](const char *name, const Source &source) { QTest::newRow(name) << source; };
    const QByteArray movie = "'v0_height': 480, 'v0_width': 640, 'v0_codec': 'avc1'";

    // The two verdicts, and the decoder that comes of them.
    row("both decode", {.movie = movie,
                        .framework = "'rate': 25",
                        .expected = "'dec': 1, 'decSkip': null, 'v0_codec': 'h264'"});
    row("the report is judged without the title and the name",
        {.file = u"Segmentation fault.avi"_s,
         .messages = u"  Metadata:\n    title           : Segmentation fault"_s,
         .expected = "'dec': 1"});
    row("not compliant",
        {.messages = u"Segmentation fault"_s, .expected = "'refused': 'V_reason_unreadable'"});
    row("not compliant, but the framework decodes", {.messages = u"Cannot allocate temp picture"_s,
                                                     .movie = movie,
                                                     .expected = "'dec': 0, 'decSkip': 1"});
    row("decodes too little", {.messages = u"Error while decoding stream #0:0\nframe=    3 fps=0"_s,
                               .expected = "'refused': 'V_reason_unreadable'"});
    row("decodes enough", {.messages = u"Error while decoding stream #0:0\nframe=   10 fps=0"_s,
                           .expected = "'dec': 1"});
    row("protected", {.video = u"Video: none (drmi / 0x696D7264), 64x48"_s,
                      .movie = movie,
                      .expected = "'refused': 'V_reason_protected', 'inspections': null"});
    row("protected by common encryption", {.video = u"Video: none (encv / 0x76636E65), 64x48"_s,
                                           .expected = "'refused': 'V_reason_protected'"});
    row("protected Windows Media",
        {.messages = u"[asf @ 0x1] DRM protected stream detected, decoding will likely fail!\n"
                     "Segmentation fault"_s,
         .expected = "'refused': 'V_reason_protected'"});
    row("protected sound alone",
        {.video = u"Video: h264, 64x48, 25 tbr\n  Stream #0:1: Audio: aac (drms / 0x1), mono"_s,
         .movie = movie,
         .expected = "'dec': 1, 'decSkip': 0, 'inspections': null"});
    row("transport stream", {.wrapper = u"mpegts"_s,
                             .movie = movie,
                             .expected = "'dec': 1, 'decSkip': 0, 'inspections': null"});
    row("MPEG that was read", {.file = u"a.mpg"_s,
                               .mp = "'v0_fps': 29.97",
                               .movie = movie,
                               .expected = "'v0_fps': 29.97, 'inspections': null"});
    row("MPEG that was not read", {.file = u"a.mpg"_s,
                                   .movie = movie,
                                   .framework = "'rate': 24",
                                   .expected = "'v0_fps': 24, 'inspections': 1"});
    row("evo is not for the MPEG reader",
        {.file = u"a.EVO"_s, .mp = "'v0_fps': 29.97", .expected = "'v0_fps': 25"});
    row("movie without a height",
        {.movie = "'v0_width': 640", .expected = "'decSkip': 0, 'v0_width': 64"});
    row("movie with the height of its container",
        {.movie = "'w_height': 480, 'w_width': 640", .expected = "'decSkip': null"});
    row("movie that does not decode",
        {.movie = movie, .framework = "'fails': true", .expected = "'decSkip': 0"});
    row("Indeo", {.video = u"Video: indeo5, 64x48, 25 tbr"_s,
                  .movie = "'v0_height': 480, 'v0_codec': 'IV50'",
                  .expected = "'dec': 1, 'v0_codec': 'indeo5'"});
    row("Indeo by the framework's name", {.file = u"a.mov"_s,
                                          .video = u"Video: indeo5, 64x48, 25 tbr"_s,
                                          .movie = "'v0_height': 480, 'v0_codec': 'IV50'",
                                          .expected = "'dec': 0, 'decSkip': 1"});
    row("DV chroma", {.video = u"Video: dvvideo, yuv411p, 720x480, 25 tbr"_s,
                      .movie = "'v0_height': 480, 'v0_codec': 'dvc'",
                      .expected = "'w0_chroma': 'yuv411p', 'v0_fields': 'bottom field first'"});
    row("MPEG-2 without playback", {.video = u"Video: mpeg2video, 64x48, 25 tbr"_s,
                                    .movie = "'v0_height': 480",
                                    .expected = "'decSkip': 0"});
    row("MPEG-2 with playback", {.video = u"Video: mpeg2video, 64x48, 25 tbr"_s,
                                 .movie = "'v0_height': 480",
                                 .framework = "'playback': true",
                                 .expected = "'decSkip': null"});
    row("sound that gets lost", {.file = u"a.vob"_s,
                                 .video = u"Video: mpeg2video, 64x48, 25 tbr"_s,
                                 .messages = u"Segmentation fault"_s,
                                 .movie = "'v0_height': 480",
                                 .framework = "'playback': true",
                                 .expected = "'dec': 0, 'notices': [40]"});
    row("sound that an elementary stream has not", {.file = u"a.m2v"_s,
                                                    .video = u"Video: mpeg2video, 64x48, 25 tbr"_s,
                                                    .messages = u"Segmentation fault"_s,
                                                    .movie = "'v0_height': 480",
                                                    .framework = "'playback': true",
                                                    .expected = "'dec': 0, 'notices': []"});
    row("test picture", {.video = u"Video: h264, 64x48 [SAR 1:1 DAR 16:9], 25 tbr"_s,
                         .movie = movie,
                         .testPictures = u"/t"_s,
                         .expected = "'grabbed': '160x90', 'decSkip': null"});
    row("test picture of no stated shape",
        {.movie = movie, .testPictures = u"/t"_s, .expected = "'grabbed': '160x90'"});
    row("test picture that fails",
        {.movie = movie, .testPictures = u"/none"_s, .expected = "'decSkip': 0"});

    // The merge, where the context counts.
    row("chroma of ffmpeg before the framework's",
        {.movie = movie + ", 'v0_chroma': '4:2:0'", .expected = "'v0_chroma': 'yuv420p'"});
    row("rate from an extract", {.file = u"a.mpg"_s,
                                 .video = u"Video: h264, 64x48"_s,
                                 .movie = movie,
                                 .framework = "'extractRate': 24",
                                 .expected = "'v0_fps': 24, 'extracts': 1"});
    row("no extract of other files", {.file = u"a.mp4"_s,
                                      .video = u"Video: h264, 64x48"_s,
                                      .movie = movie,
                                      .framework = "'extractRate': 24",
                                      .expected = "'v0_fps': 666, 'extracts': null"});
    row("clock for a rate",
        {.video = u"Video: vp8, 64x48, 1k tbr"_s, .expected = "'v0_fps': 666, 'v0_width': 64"});
    row("chapters", {.messages = u"  Chapters:\n    Chapter #0:0: start 0.000000, end 25.500000\n"
                                 "    Chapter #0:1: start 25.500000, end 60.000000"_s,
                     .expected = "'chapters': [0, 25.5]"});
    row("name that is a report of its own",
        {.file = u"a\nInput #0, x, b\n  Stream #0:0: Video: vp8, 8x8\n.avi"_s,
         .expected = "'wrapper': 'avi', 'v0_codec': 'h264', 'v0_width': 64"});

    // Size and colours of what was decoded.
    const QString unprobed = u"Video: h264 ([27][0][0][0] / 0x001B), none, 25 fps, 25 tbr"_s;
    const QString output =
        u"[graph 0 input from stream 0:0 @ 0x1] w:640 h:360 pixfmt:yuv420p10le tb:1/90000\n"
        "Output #0, yuv4mpegpipe, to 'f':\n  Stream #0:0: Video: wrapped_avframe, "
        "yuv420p(tv, bt2020nc/bt2020/smpte2084), 640x360 [SAR 4:3 DAR 64:27], 25 fps"_s;
    row("size from the frames",
        {.video = unprobed,
         .decoded = {.size = {720, 576}, .par = u"64:45"_s},
         .expected = "'v0_width': 720, 'v0_height': 576, 'v0_par': '64:45', 'v0_dar': '16:9',"
                     "'v0_pixelFormat': null, 'v0_fps': 25"});
    row("size and colours from the output",
        {.video = unprobed,
         .messages = output,
         .expected = "'v0_width': 640, 'v0_height': 360, 'v0_dar': '64:27', 'v0_par': '4:3',"
                     "'v0_pixelFormat': 'yuv420p10le', 'v0_chroma': 'yuv420p10le',"
                     "'v0_transfer': 'smpte2084', 'v0_matrix': 'bt2020nc', 'v0_range': null"});
    row("rate from the frames", {.video = u"Video: h264, none"_s,
                                 .decoded = {.size = {64, 48}, .fps = 24},
                                 .expected = "'v0_fps': 24, 'v0_dar': null"});
    row("clock of the frames", {.video = u"Video: h264, none"_s,
                                .decoded = {.size = {64, 48}, .fps = 1000},
                                .expected = "'v0_fps': 666"});
    row("stated size stays", {.messages = output,
                              .decoded = {.size = {720, 576}, .par = u"64:45"_s},
                              .expected = "'v0_width': 64, 'v0_dar': null, 'v0_transfer': null"});
    row("no size at all", {.video = unprobed, .expected = "'refused': 'V_reason_noThumbnail'"});
    row("size of the container alone", {.video = u"Video: svq3, none, 25 tbr"_s,
                                        .movie = "'w_width': 640, 'w_height': 480",
                                        .expected = "'v0_width': 640, 'v0_height': 480"});
    row("codec without a name", {.video = u"Video: none, 64x48, 25 tbr"_s,
                                 .movie = "'v0_height': 480, 'v0_width': 640",
                                 .expected = "'dec': 0, 'v0_codec': null"});

    // Field orders.
    for (const char *size : {"960x720", "960x540", "640x480"})
        row(size, {.video = u"Video: mjpeg, %1, 25 tbr"_s.arg(QLatin1String(size)),
                   .fields = u"TFF"_s,
                   .expected = "'v0_fields': 'progressive'"});
    row("Motion-JPEG of another size", {.video = u"Video: mjpeg, 720x480, 25 tbr"_s,
                                        .fields = u"TFF"_s,
                                        .expected = "'v0_fields': 'top field first'"});
    row("Motion-JPEG that the framework decodes alone",
        {.video = u"Video: mjpeg, 720x576, 25 tbr"_s,
         .messages = u"Segmentation fault"_s,
         .fields = {},
         .movie = "'v0_height': 576, 'v0_codec': 'mjpa'",
         .expected = "'dec': 0, 'v0_fields': 'top field first'"});
    row("Motion-JPEG that ffmpeg decodes", {.video = u"Video: mjpeg, 720x576, 25 tbr"_s,
                                            .fields = {},
                                            .expected = "'v0_fields': null"});

    // Durations.
    row("no duration", {.duration = u"N/A"_s, .expected = "'w_duration': 1, 'notices': [60]"});
    row("less than a second", {.duration = u"00:00:00.48"_s, .expected = "'w_duration': 1"});
    row("the last pictures of a recording",
        {.duration = u"00:00:00.48"_s, .measured = 12, .expected = "'w_duration': 12"});
    row("guessed from a bit rate",
        {.duration = u"00:00:09.11, bitrate: 104856 kb/s"_s,
         .messages =
             u"[mpegvideo @ 0x1] Estimating duration from bitrate, this may be inaccurate"_s,
         .measured = 700,
         .expected = "'w_duration': 700, 'w_bitrate': null"});
    row("guessed, but not by the reader that wins",
        {.file = u"a.m2v"_s,
         .duration = u"00:00:09.11, bitrate: 104856 kb/s"_s,
         .messages =
             u"[mpegvideo @ 0x1] Estimating duration from bitrate, this may be inaccurate"_s,
         .measured = 700,
         .mp = "'w_duration': 12.5",
         .expected = "'w_duration': 12.5"});
    row("of a large file the head is measured", {.megabytes = 1024,
                                                 .duration = u"N/A"_s,
                                                 .measured = 100,
                                                 .expected = "'w_duration': 209"});
    row("small DVD file", {.file = u"a.vob"_s,
                           .megabytes = 149,
                           .measured = 40,
                           .expected = "'w_duration': 40, 'notices': []"});
    row("larger DVD file", {.file = u"a.vob"_s,
                            .megabytes = 151,
                            .duration = u"00:00:30.00, bitrate: 10080 kb/s"_s,
                            .measured = 40,
                            .expected = "'w_duration': 30, 'notices': []"});
    row("larger DVD file, with a demultiplexer", {.file = u"a.VRO"_s,
                                                  .megabytes = 499,
                                                  .measured = 40,
                                                  .movie = "'v0_width': 1",
                                                  .framework = "'demux': true",
                                                  .expected = "'w_duration': 40"});
    row("DVD file whose duration cannot be", {.file = u"a.vob"_s,
                                              .megabytes = 200,
                                              .duration = u"00:00:10.00, bitrate: 160000 kb/s"_s,
                                              .measured = 40,
                                              .expected = "'w_duration': 324, 'notices': [60]"});
    row("no DVD file", {.file = u"a.mpg"_s,
                        .megabytes = 200,
                        .duration = u"00:00:10.00, bitrate: 160000 kb/s"_s,
                        .measured = 40,
                        .expected = "'w_duration': 10, 'notices': []"});
}

void SourceAnalysisTest::reconcilesTheReaders()
{
    QFETCH(Source, source);
    const QString path = emptyFile(source.file, qint64(source.megabytes) * 1024 * 1024);
    QString grabbed;
    AnalysisReaders readers;
    if (!source.movie.isNull())
        readers.movieFramework = &m_framework;
    m_framework.movie = parsed(source.movie);
    m_framework.answers = parsed(source.framework);
    readers.grabTestFrame = [&grabbed](const QString &, const QString &folder, const QSize &size) {
        grabbed = u"%1x%2"_s.arg(size.width()).arg(size.height());
        return folder == u"/t";
    };
    readers.mpegInfoDico = [&source](const QString &) { return parsed(source.mp); };
    readers.durationM2v = [&source](const QString &) { return source.measured; };
    readers.durationOfHead = [&source](const QString &, qint64 bytes) {
        return bytes == mostMeasuredBytes ? source.measured : 0;
    };
    const auto record =
        analyseSource({.srcPath = path,
                       .report = reportOf(source, path),
                       .fields = source.fields.isEmpty() ? QString() : order(source.fields),
                       .testPictureFolder = source.testPictures,
                       .picture = source.decoded},
                      readers);
    Dico actual = record ? *record : Dico();
    actual.insert(m_framework.asked);
    actual.insert(u"grabbed"_s, grabbed);
    QVariantList notices;
    for (const AlertRequest &notice : std::as_const(m_notices))
        notices.append(notice.seconds);
    actual.insert(u"notices"_s, notices);
    Dico expected = parsed(source.expected);
    const QVariant reason = expected.take(u"refused"_s);
    QCOMPARE(record ? QString() : record.reason(),
             reason.isValid() ? localised(reason.toString()) : QString());
    for (auto fact = expected.cbegin(); fact != expected.cend(); ++fact) {
        const QVariant value = actual.value(fact.key());
        QVERIFY2(fact->isNull() ? !value.isValid() : value == *fact,
                 qPrintable(fact.key() + u" is "_s + value.toString()));
    }
    QVERIFY(!m_framework.isExtractLeft());
}

QTEST_GUILESS_MAIN(SourceAnalysisTest)
#include "test_sourceAnalysis.moc"
