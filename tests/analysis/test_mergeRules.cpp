#include "analysis/durationRule.h"
#include "analysis/mergeRules.h"
#include "classShared/sourceDico.h"
#include "settings/stringTables.h"

#include <QJsonDocument>
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
        QTest::addColumn<QByteArray>("values");
        // The claims of the MPEG reader, of ffmpeg and of the framework, and the winner.
        const auto row = [](const char *name, const QString &place, const QByteArray &values) {
            QTest::newRow(name) << place.section(u' ', 0, 0) << place.section(u' ', 1) << values;
        };
        row("one alone", u"v0_dar mp4"_s, "null, null, '5:4', '5:4'");
        row("an empty text is no claim", u"v0_codec mp4"_s, "'', 'h264', '', 'h264'");
        row("nothing but empty texts", u"a0_lang mp4"_s, "null, '', '', null");
        row("chroma of the MPEG reader", u"v0_chroma mpg"_s, "'yuv422p', 'left)', null, 'yuv422p'");
        row("chroma in full range", u"v0_chroma mov"_s, "null, 'yuvj422p', '4:2:2', 'yuv422p'");
        row("container size", u"w_width mov"_s, "null, 640, 720, 720");
        row("container size of MPEG", u"w_height vob"_s, "null, 640, 720, 640");
        row("DV fourcc", u"v0_codec avi"_s, "null, 'dvvideo', 'dvcp', 'dvcp'");
        row("Motion-JPEG flavour", u"v0_codec avi"_s, "null, 'mjpeg', 'mjpa', 'mjpa'");
        row("MPEG-4 flavour", u"v0_codec avi"_s, "null, 'mpeg4', 'divx', 'divx'");
        row("Motion-JPEG by another name", u"v0_codec avi"_s, "null, 'mjpeg', 'dmb1', 'dmb1'");
        row("MPEG-2 by another name", u"v0_codec mp4"_s, "null, 'mpeg2video', 'm2s', 'm2s'");
        row("no codec for ffmpeg", u"v0_codec mp4"_s, "null, 'none', 'smc', 'smc'");
        row("ffmpeg's codec name", u"v0_codec mp4"_s, "null, 'h264', 'avc1', 'h264'");
        row("ffmpeg in doubt", u"v0_codec mov"_s, "null, 'h264', 'avc1', 'avc1'");
        row("standard aspect of ffmpeg", u"v0_dar mov"_s, "null, '16:9', '177:100', '16:9'");
        row("standard aspect of the other", u"v0_dar mp4"_s, "null, '177:100', '16:9', '16:9'");
        row("other aspects in .mov", u"v0_dar mov"_s, "null, '4:3', '16:9', '16:9'");
        row("other aspects", u"v0_par mp4"_s, "null, '4:3', '16:9', '4:3'");
        row("progressive by the MPEG reader", u"v0_fields mpg"_s,
            "'progressive', 'top field first', null, 'progressive'");
        row("interlaced by the MPEG reader", u"v0_fields mpg"_s,
            "'i', 'top field first', null, 'top field first'");
        row("fields of the framework", u"v0_fields mp4"_s,
            "null, 'progressive', 'top field first', 'top field first'");
        row("DV sound", u"a0_codec dv"_s, "null, 'pcm_s16le', 'vdva', 'vdva'");
        row("plain sound", u"a0_codec mp4"_s, "null, 'aac', 'aac lc', 'aac'");
        row("sound offset", u"a0_offset mp4"_s, "null, 4.0, 5.0, 4.0");
        row("bit rate in reader order", u"v0_bitrate mpg"_s, "8000, 9000, 7000, 8000");
        row("any other key", u"v0_width mpg"_s, "704, 720, null, 720");
        row("duration of the MPEG reader", u"w_duration m2v"_s, "5.5, 7, null, 5.5");
        row("durations alike", u"w_duration mp4"_s, "null, 60, 61.9, 61.9");
        row("durations apart", u"w_duration mp4"_s, "null, 60, 62.0, 60");
        row("durations apart in .mov", u"w_duration mov"_s, "null, 60, 90.0, 90.0");
        row("no duration", u"w_duration mp4"_s, "null, null, null, null");
    }
    void settlesDisagreements()
    {
        QFETCH(QString, key);
        QFETCH(QString, extension);
        QFETCH(QByteArray, values);
        const QByteArray json = "[" + values.replace('\'', '"') + "]";
        const QVariantList claims = QJsonDocument::fromJson(json).toVariant().toList();
        QCOMPARE(claims.size(), 4);
        ReaderDicos readers;
        Dico *dicos[] = {&readers.mp, &readers.ff, &readers.qt};
        for (int i = 0; i < 3; ++i) {
            if (!claims.at(i).isNull())
                dicos[i]->insert(key, claims.at(i));
        }
        MergeContext context;
        context.extension = extension;
        const QVariant winner = mergedRecord(readers, context).value(key);
        QCOMPARE(winner, claims.at(3).isNull() ? QVariant() : claims.at(3));
    }

    void reconcilesFrameRates()
    {
        FrameRateContext context;
        const auto rate = [&context](const FrameRateClaims &claims, const QString &extension) {
            context.extension = extension;
            context.isMpegReaderFailed = claims.mp <= 0;
            context.measureMovie = [] { return 12.5; };
            return reconciledFrameRate(claims, context);
        };
        context.isMovieFrameworkUsable = true;
        QCOMPARE(rate({24, 25, 30}, u"mpg"_s), 24.0);
        // Alike, and apart.
        QCOMPARE(rate({0, 25.3, 25}, u"mp4"_s), 25.3);
        QCOMPARE(rate({0, 50, 25}, u"mp4"_s), 50.0);
        // ffmpeg's is too fast or too slow, unless there is no other.
        QCOMPARE(rate({0, 150, 25}, u"mp4"_s), 25.0);
        QCOMPARE(rate({0, 1, 0.2}, u"mp4"_s), 0.2);
        QCOMPARE(rate({0, 150, 0}, u"mkv"_s), 150.0);
        // Measured where it can be.
        QCOMPARE(rate({0, 25, 0}, u"mp4"_s), 12.5);
        QCOMPARE(rate({0, 25, 0.05}, u"avi"_s), 25.0);
        QCOMPARE(rate({0, 0, 0}, u"flv"_s), unknownFrameRate);
        context.isMovieFrameworkUsable = false;
        QCOMPARE(rate({0, 0, 0}, u"mp4"_s), unknownFrameRate);
    }

    void checksDvdDurationsAgainstTheSize()
    {
        const auto checked = [](double kilobytes, int measured, double bitrate = 20000) {
            DvdFile file{.kilobytes = kilobytes, .bitrate = bitrate};
            file.measure = [measured] { return measured; };
            const CheckedDuration duration = checkedDvdDuration(30, file);
            return std::pair(duration.seconds, duration.isTimecodeBroken);
        };
        // A small file is measured, unless that fails.
        QCOMPARE(checked(1000, 40), std::pair(40.0, false));
        QCOMPARE(checked(1000, 1), std::pair(30.0, false));
        QCOMPARE(checked(153599, 40), std::pair(40.0, false));
        // The size of a large one tells a broken timecode, if its bit rate is not that of a DVD.
        QCOMPARE(checked(400000, 40), std::pair(634.0, true));
        QCOMPARE(checked(400000, 40, 0), std::pair(634.0, true));
        QCOMPARE(checked(400000, 40, 10080), std::pair(30.0, false));
        QCOMPARE(checkedDvdDuration(317, {.kilobytes = 400000}).seconds, 317.0);
    }
};

QTEST_GUILESS_MAIN(MergeRulesTest)
#include "test_mergeRules.moc"
