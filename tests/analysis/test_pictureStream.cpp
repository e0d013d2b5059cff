#include "analysis/ffProbes.h"
#include "analysis/ffReport.h"
#include "analysis/pictureStream.h"
#include "analysis/sourceAnalysis.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

const QString small = u"Video: h264, yuv420p, 320x240 [SAR 1:1 DAR 4:3], 25 tbr (default)"_s;
const QString large = u"Video: hevc, yuv420p, 640x360 [SAR 1:1 DAR 16:9], 50 tbr"_s;
const QString huge = u"Video: vp9, yuv420p, 3840x2160 [SAR 1:1 DAR 16:9], 30 tbr"_s;
const QString cover = u"Video: png, rgb24, 9000x9000 (attached pic)"_s;
const QString sound = u"Audio: aac, 48000 Hz, stereo, fltp"_s;

QString reportOf(const QStringList &streams, int decoded = -1)
{
    QString report =
        u"Input #0, mov, from 'a':\n  Duration: 00:00:09.00, start: 0, bitrate: 8 kb/s\n"_s;
    for (int stream = 0; stream < streams.size(); ++stream)
        report += u"  Stream #0:%1: %2\n"_s.arg(stream).arg(streams[stream]);
    if (decoded >= 0)
        report += u"Stream mapping:\n  Stream #0:%1 -> #0:0 (h264 (native) -> rawvideo)\n"_s.arg(
                      decoded) +
                  u"Output #0, yuv4mpegpipe, to 'b':\n  Stream #0:0: Video: rawvideo, 640x360\n"_s;
    return report;
}

} // namespace

class PictureStreamTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void choosesTheStreamOfTheMovie_data()
    {
        QTest::addColumn<QString>("report");
        QTest::addColumn<QList<int>>("order");
        /// Of each stream.
        QTest::addColumn<QList<int>>("pictures");
        QTest::addColumn<int>("chosen");
        const auto row = [](const char *name, const QString &report, const QList<int> &order,
                            const QList<int> &pictures, int chosen) {
            QTest::newRow(name) << report << order << pictures << chosen;
        };
        row("one", reportOf({small}, 0), {0}, {}, -1);
        row("one and a cover", reportOf({cover, sound, small}, 2), {2}, {}, -1);
        row("only a cover", reportOf({cover}, 0), {}, {}, -1);
        row("what was decoded", reportOf({small, large}, 1), {1, 0}, {10, 10}, 1);
        row("what was decoded, though small", reportOf({large, sound, small}, 2), {2, 0},
            {10, 0, 10}, 2);
        row("the flag counts", reportOf({large, small}), {1, 0}, {10, 10}, 1);
        row("for less than many pixels", reportOf({small, huge, large}), {1, 0, 2}, {10, 10, 10},
            1);
        row("a still", reportOf({small, huge}, 1), {1, 0}, {10, 1}, 0);
        row("nearly many", reportOf({small, huge}, 1), {1, 0}, {10, 9}, 0);
        row("stills and a movie", reportOf({huge, large, small}, 0), {0, 2, 1}, {2, 10, 3}, 1);
        row("hardly any in all", reportOf({small, large}, 1), {1, 0}, {2, 9}, 1);
        row("what was decoded is no video", reportOf({small, large, u"Data: none"_s}, 2), {0, 1},
            {10, 10}, 0);
    }

    void choosesTheStreamOfTheMovie()
    {
        QFETCH(QString, report);
        QFETCH(QList<int>, pictures);
        QFETCH(int, chosen);
        QTEST(videoStreams(report), "order");
        QCOMPARE(
            pictureStream(report, [&](int stream) { return pictures.at(stream); }).value_or(-1),
            chosen);
        QCOMPARE(contains(*parseFfReport(report), Keys::w_videos), chosen >= 0);
    }

    void theRecordBeginsWithIt()
    {
        QTemporaryDir folder;
        QFile file(folder.filePath(u"a.mov"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        AnalysisReaders readers;
        // It speaks of a stream of its own choice.
        readers.mpegInfoDico = [](const QString &) {
            return Dico{{Keys::v_fps(0), 12.5}, {Keys::v_bitrate(0), 7}, {Keys::w_duration, 8}};
        };
        const auto record = analyseSource(
            {file.fileName(), reportOf({cover, small, large, huge}, 2), {}, {}}, readers);
        QVERIFY(record);
        QCOMPARE(read(*record, Keys::w_videos), 3);
        QCOMPARE(read(*record, Keys::w_duration), 8.0);
        const QStringList codecs{u"hevc"_s, u"h264"_s, u"vp9"_s, u"png"_s};
        const QList<int> ids{2, 1, 3, 0};
        for (int number = 0; number < codecs.size(); ++number) {
            QCOMPARE(read(*record, Keys::v_codec, number), codecs[number]);
            QCOMPARE(read(*record, Keys::v_id, number), ids[number]);
        }
        QCOMPARE(read(*record, Keys::v_dar, 0), u"16:9"_s);
        QCOMPARE(read(*record, Keys::v_fps, 0), 50.0);
        QVERIFY(!read(*record, Keys::v_bitrate, 0));
    }

    void soundIsOffsetAgainstIt()
    {
        QString report = reportOf({small, large, sound}, 1);
        report.prepend(u"ff_read_packet stream=0, pts=1000, dts=1000\n"
                       "ff_read_packet stream=1, pts=3000, dts=3000\n"
                       "ff_read_packet stream=2, pts=3500, dts=3500\n"_s);
        QCOMPARE(ptsDtsOffsetMs(report).value_or(Dico()), (Dico{{u"a2_offsetMs"_s, 500.0}}));
    }
};

QTEST_GUILESS_MAIN(PictureStreamTest)
#include "test_pictureStream.moc"
