#include "analysis/ffReport.h"
#include "analysis/sourceAnalysis.h"
#include "classShared/sourceDico.h"
#include "settings/alerts.h"
#include "settings/stringTables.h"
#include "tasks/toolPlaces.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

/// A movie framework that answers what the test sets.
class FakeFramework : public MovieFramework
{
public:
    Dico movie;
    bool isDecodable = true;
    int inspections = 0;

    Dico inspect(const QString &) override
    {
        ++inspections;
        return movie;
    }
    double measureFrameRate(const QString &, RateMeasurement) override { return 0; }
    bool writeExtract(const QString &, const QString &) override { return false; }
    bool canDecode(const QString &) override { return isDecodable; }
    std::unique_ptr<OpenedMovie> openMovie(const QString &) override { return {}; }
    bool hasMpeg2Playback() const override { return false; }
    bool hasMpeg2Demultiplexer() const override { return false; }
};

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

} // namespace

class SourceAnalysisTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    QList<AlertRequest> m_notices;
    FakeFramework m_framework;

    QString emptyFile(const QString &name)
    {
        const QString path = m_folder.filePath(name);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        return file.open(QIODevice::WriteOnly) ? path : QString();
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
        m_framework = {};
        setAlertPresenter(std::make_unique<NoticeRecorder>(&m_notices));
    }
    void cleanupTestCase() { setAlertPresenter(nullptr); }

    void saysWhyASourceIsRefused()
    {
        const QString h264 = reportOf(u"Video: h264, 64x48, 25 tbr"_s);
        QCOMPARE(analyseSource({m_folder.filePath(u"none.avi"_s), h264, {}, {}}, {}).reason(),
                 localised(u"V_reason_missing"_s));
        QCOMPARE(analysed(u"a.ASX"_s, h264).reason(), localised(u"V_reason_asx"_s));
        QCOMPARE(analysed(u"a.avi"_s, u"no report"_s).reason(),
                 localised(u"V_reason_unreadable"_s));
        QCOMPARE(analysed(u"a.avi"_s, reportOf(u"Video: none (drmi / 0x1), 64x48"_s)).reason(),
                 localised(u"V_reason_unreadable"_s));
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
        m_framework.isDecodable = false;
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
        QCOMPARE(m_framework.inspections, 0);
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

QTEST_GUILESS_MAIN(SourceAnalysisTest)
#include "test_sourceAnalysis.moc"
