#include "analysis/durationRule.h"
#include "analysis/mergeRules.h"
#include "classShared/sourceDico.h"
#include "settings/stringTables.h"

#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

class MergeRulesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { setInterfaceLanguage(u"en"_s); }

    void settlesDisagreements_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("extension");
        QTest::addColumn<QVariantList>("claims"); // mp, ff, qt; invalid: silent
        QTest::addColumn<QVariant>("winner");
        const QVariant silent;
        const auto row = [](const char *name, const QString &key, const QString &extension,
                            const QVariantList &claims, const QVariant &winner) {
            QTest::newRow(name) << key << extension << claims << winner;
        };
        row("one alone", u"v0_dar"_s, u"mp4"_s, {silent, silent, u"5:4"_s}, u"5:4"_s);
        row("an empty text is no claim", u"v0_codec"_s, u"mp4"_s, {u""_s, u"h264"_s, u""_s},
            u"h264"_s);
        row("nothing but empty texts", u"a0_lang"_s, u"mp4"_s, {silent, u""_s, u""_s}, silent);
        row("chroma of the MPEG reader", u"v0_chroma"_s, u"mpg"_s,
            {u"yuv422p"_s, u"left)"_s, silent}, u"yuv422p"_s);
        row("chroma in full range", u"v0_chroma"_s, u"mov"_s, {silent, u"yuvj422p"_s, u"4:2:2"_s},
            u"yuv422p"_s);
        row("container size", u"w_width"_s, u"mov"_s, {silent, 640, 720}, 720);
        row("container size of MPEG", u"w_height"_s, u"vob"_s, {silent, 640, 720}, 640);
        row("DV fourcc", u"v0_codec"_s, u"avi"_s, {silent, u"dvvideo"_s, u"dvcp"_s}, u"dvcp"_s);
        row("Motion-JPEG flavour", u"v0_codec"_s, u"avi"_s, {silent, u"mjpeg"_s, u"mjpa"_s},
            u"mjpa"_s);
        row("MPEG-4 flavour", u"v0_codec"_s, u"avi"_s, {silent, u"mpeg4"_s, u"divx"_s}, u"divx"_s);
        row("ffmpeg's codec name", u"v0_codec"_s, u"mp4"_s, {silent, u"h264"_s, u"avc1"_s},
            u"h264"_s);
        row("ffmpeg in doubt", u"v0_codec"_s, u"mov"_s, {silent, u"h264"_s, u"avc1"_s}, u"avc1"_s);
        row("standard aspect of ffmpeg", u"v0_dar"_s, u"mov"_s, {silent, u"16:9"_s, u"177:100"_s},
            u"16:9"_s);
        row("standard aspect of the framework", u"v0_dar"_s, u"mp4"_s,
            {silent, u"177:100"_s, u"16:9"_s}, u"16:9"_s);
        row("other aspects in .mov", u"v0_dar"_s, u"mov"_s, {silent, u"4:3"_s, u"16:9"_s},
            u"16:9"_s);
        row("other aspects", u"v0_par"_s, u"mp4"_s, {silent, u"4:3"_s, u"16:9"_s}, u"4:3"_s);
        row("progressive by the MPEG reader", u"v0_fields"_s, u"mpg"_s,
            {u"progressive"_s, u"top field first"_s, silent}, u"progressive"_s);
        row("interlaced by the MPEG reader", u"v0_fields"_s, u"mpg"_s,
            {u"i"_s, u"top field first"_s, silent}, u"top field first"_s);
        row("DV sound", u"a0_codec"_s, u"dv"_s, {silent, u"pcm_s16le"_s, u"vdva"_s}, u"vdva"_s);
        row("plain sound", u"a0_codec"_s, u"mp4"_s, {silent, u"aac"_s, u"aac lc"_s}, u"aac"_s);
        row("sound offset", u"a0_offset"_s, u"mp4"_s, {silent, 4.0, 5.0}, 4.0);
        row("bit rate in reader order", u"v0_bitrate"_s, u"mpg"_s, {8000, 9000, 7000}, 8000);
        row("any other key", u"v0_width"_s, u"mpg"_s, {704, 720, silent}, 720);
        row("duration of the MPEG reader", u"w_duration"_s, u"m2v"_s, {5.5, 7, silent}, 5.5);
        row("durations alike", u"w_duration"_s, u"mp4"_s, {silent, 60, 61.9}, 61.9);
        row("durations apart", u"w_duration"_s, u"mp4"_s, {silent, 60, 62.0}, 60);
        row("durations apart in .mov", u"w_duration"_s, u"mov"_s, {silent, 60, 90.0}, 90.0);
        row("no duration", u"w_duration"_s, u"mp4"_s, {silent, silent, silent}, silent);
    }
    void settlesDisagreements()
    {
        QFETCH(QString, key);
        QFETCH(QString, extension);
        QFETCH(QVariantList, claims);
        ReaderDicos readers;
        Dico *dicos[] = {&readers.mp, &readers.ff, &readers.qt};
        for (int i = 0; i < 3; ++i) {
            if (claims.at(i).isValid())
                dicos[i]->insert(key, claims.at(i));
        }
        MergeContext context;
        context.extension = extension;
        QTEST(mergedRecord(readers, context).value(key), "winner");
    }

    void reconcilesFrameRates_data()
    {
        QTest::addColumn<QList<double>>("claims"); // mp, ff, qt
        QTest::addColumn<QString>("extension");
        QTest::addColumn<double>("rate");
        QTest::newRow("MPEG reader") << QList<double>{24, 25, 30} << u"mpg"_s << 24.0;
        QTest::newRow("alike") << QList<double>{0, 25.3, 25} << u"mp4"_s << 25.3;
        QTest::newRow("apart") << QList<double>{0, 50, 25} << u"mp4"_s << 50.0;
        QTest::newRow("ffmpeg too fast") << QList<double>{0, 150, 25} << u"mp4"_s << 25.0;
        QTest::newRow("ffmpeg too slow") << QList<double>{0, 1, 0.2} << u"mp4"_s << 0.2;
        QTest::newRow("ffmpeg alone, however fast")
            << QList<double>{0, 150, 0} << u"mkv"_s << 150.0;
        QTest::newRow("measured") << QList<double>{0, 25, 0} << u"mp4"_s << 12.5;
        QTest::newRow("not measurable") << QList<double>{0, 25, 0.05} << u"avi"_s << 25.0;
        QTest::newRow("nothing in .flv") << QList<double>{0, 0, 0} << u"flv"_s << unknownFrameRate;
    }
    void reconcilesFrameRates()
    {
        QFETCH(QList<double>, claims);
        QFETCH(QString, extension);
        FrameRateContext context;
        context.extension = extension;
        context.isMpegReaderFailed = claims.at(0) <= 0;
        context.isMovieFrameworkUsable = true;
        context.measureMovie = [] { return 12.5; };
        QTEST(reconciledFrameRate({claims.at(0), claims.at(1), claims.at(2)}, context), "rate");
        // Without the framework nothing may be measured.
        context.isMovieFrameworkUsable = false;
        context.measureMovie = [] { return 1.0; };
        QVERIFY(reconciledFrameRate({0, 0, 0}, context) == unknownFrameRate);
    }

    void checksDvdDurationsAgainstTheSize_data()
    {
        QTest::addColumn<double>("kilobytes");
        QTest::addColumn<int>("measured");
        QTest::addColumn<double>("duration");
        QTest::addColumn<bool>("isBroken");
        QTest::newRow("small: measured") << 1000.0 << 40 << 40.0 << false;
        QTest::newRow("small: the probe failed") << 1000.0 << 1 << 30.0 << false;
        QTest::newRow("large: plausible") << 200000.0 << 40 << 30.0 << false;
        QTest::newRow("large: broken timecode") << 400000.0 << 40 << 80.0 << true;
    }
    void checksDvdDurationsAgainstTheSize()
    {
        QFETCH(double, kilobytes);
        QFETCH(int, measured);
        DvdFile file;
        file.kilobytes = kilobytes;
        file.bitrate = 10000;
        file.measure = [measured] { return measured; };
        const CheckedDuration checked = checkedDvdDuration(30, file);
        QTEST(checked.seconds, "duration");
        QTEST(checked.isTimecodeBroken, "isBroken");
    }
};

QTEST_GUILESS_MAIN(MergeRulesTest)
#include "test_mergeRules.moc"
