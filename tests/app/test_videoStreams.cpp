#include "app/appDelegate.h"
#include "app/batchList.h"
#include "app/measuredDuration.h"
#include "classShared/lineLog.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"
#include "support/recordingOutlets.h"
#include "tasks/workFolder.h"

#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <atomic>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

constexpr int patience = 60000;

/// A plain colour, or none of these.
QString colourOf(const QColor &colour)
{
    const auto has = [](int part) { return part > 100; };
    if (has(colour.red()) && !has(colour.green()) && !has(colour.blue()))
        return u"red"_s;
    if (!has(colour.red()) && !has(colour.green()) && has(colour.blue()))
        return u"blue"_s;
    return colour.name();
}

struct MadeSheet {
    SheetOutcome outcome;
    SourceDico record;
    QImage picture;
    /// Runs of ffmpeg that took pictures, or were to take some.
    int passes = 0;
};

/// Writes a number behind each place where a mark is found.
void patch(QByteArray &bytes, const QByteArray &mark, qsizetype offset, const QByteArray &number)
{
    for (qsizetype at = bytes.indexOf(mark); at >= 0; at = bytes.indexOf(mark, at + 1))
        bytes.replace(at + offset, number.size(), number);
}

template <class Number>
QByteArray bigEndian(Number number)
{
    QByteArray bytes(sizeof(Number), '\0');
    qToBigEndian(number, bytes.data());
    return bytes;
}

} // namespace

/// Sources that are not what they seem: several video streams, and headers that state another
/// duration than the source has. From the analysis to the sheet.
class TestVideoStreams : public QObject
{
    Q_OBJECT

    QTemporaryDir m_clips;
    std::unique_ptr<QTemporaryDir> m_destination;

    QString clip(const QString &name) const { return m_clips.filePath(name); }

    /// From words between blanks.
    bool ffmpeg(const QString &words) const
    {
        QProcess process;
        process.setWorkingDirectory(m_clips.path());
        process.start(u"ffmpeg"_s, u"-nostdin -v error -y "_s.append(words).split(u' '));
        return process.waitForFinished(patience) && process.exitCode() == 0;
    }

    MadeSheet made(const QString &source)
    {
        m_destination = std::make_unique<QTemporaryDir>();
        RecordingOutlets outlets;
        outlets.destination = m_destination->path();
        outlets.layout = medLayout;
        appDelegate application(outlets);
        std::atomic<int> passes = 0;
        setDebug(true);
        setLogSink([&passes](const QString &line) {
            if (line.startsWith(u"th run ") || line.startsWith(u"post tl with args"))
                ++passes;
        });
        application.draggedFiles({source});
        MadeSheet sheet;
        const bool isEnded =
            QTest::qWaitFor([&outlets] { return outlets.analysisEnds == 1; }, patience) &&
            application.iba_batchGoBt() &&
            QTest::qWaitFor([&outlets] { return outlets.batchEnds == 1; }, patience);
        setLogSink({});
        setDebug(false);
        if (!isEnded)
            return sheet;
        sheet.outcome = outlets.outcomes.value(0);
        sheet.record =
            read(application.whichArrayController().row(0), RowKeys::dico).value_or(Dico());
        sheet.picture = QImage(sheet.outcome.sheet);
        sheet.passes = passes;
        return sheet;
    }

private Q_SLOTS:
    void initTestCase();
    void init()
    {
        setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>());
        prefWrite(Prefs::prefMultimediaHd, 0);
    }

    void theDescribedStreamIsTheOneShown_data();
    void theDescribedStreamIsTheOneShown();
    void overstatedDurationsAreMeasured_data();
    void overstatedDurationsAreMeasured();
};

void TestVideoStreams::initTestCase()
{
    QVERIFY(setUpWorkFolder(u"test"_s));
    const auto colour = [](const QString &name, const QString &size, const QString &seconds) {
        return u"-f lavfi -i color=%1:s=%2:r=25:d=%3 "_s.arg(name, size, seconds);
    };
    const QString x264 = u"-c:v libx264 -preset ultrafast -g 25 -pix_fmt yuv420p "_s;
    // Each a picture of 4:3 in red and one of 16:9 in blue.
    const QString both = colour(u"red"_s, u"320x240"_s, u"6"_s) +
                         colour(u"blue"_s, u"640x360"_s, u"6"_s) + u"-map 0 -map 1 "_s;
    QVERIFY(ffmpeg(both + x264 + u"-disposition:v default two.mp4"_s));
    QVERIFY(ffmpeg(both + u"-c:v mpeg2video -q:v 5 -program st=0 -program st=1 programs.ts"_s));
    QVERIFY(ffmpeg(u"-i two.mp4 -map 0 -c copy -disposition:v:0 default -disposition:v:1 0 "
                   "small.mkv"_s));
    QVERIFY(ffmpeg(colour(u"green"_s, u"900x900"_s, u"1"_s) + u"-frames:v 1 cover.png"_s));
    QVERIFY(ffmpeg(u"-i cover.png -i two.mp4 -map 1 -map 0 -c copy -disposition:v:2 attached_pic "
                   "covered.mp4"_s));
    QVERIFY(ffmpeg(u"-i two.mp4 -map 0:0 -map 0:1 -map 0:0 -c copy -disposition:v default "
                   "three.mkv"_s));
    for (const QString &pictures : {u"1"_s, u"3"_s})
        QVERIFY(ffmpeg(colour(u"blue"_s, u"960x540"_s, u"1"_s) + x264 +
                       u"-frames:v %1 still%1.mp4"_s.arg(pictures)));
    QVERIFY(ffmpeg(u"-i two.mp4 -i still1.mp4 -map 0:0 -map 1:0 -c copy -disposition:v default "
                   "motion.mp4"_s));
    QVERIFY(ffmpeg(u"-i two.mp4 -i still3.mp4 -map 1:0 -map 0:0 -c copy -disposition:v default "
                   "shots.mkv"_s));
    QVERIFY(ffmpeg(u"-f lavfi -i testsrc2=s=320x240:r=25:d=8 "_s + x264 + u"plain.mp4"_s));
    QVERIFY(ffmpeg(u"-i plain.mp4 -c copy plain.mkv"_s));
    QVERIFY(ffmpeg(u"-i plain.mp4 -c copy -movflags frag_keyframe+empty_moov fragments.mp4"_s));
}

void TestVideoStreams::theDescribedStreamIsTheOneShown_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("colour");
    QTest::addColumn<int>("stream");
    const QSize small(320, 240);
    const QSize large(640, 360);
    QTest::newRow("of two the larger") << u"two.mp4"_s << large << u"blue"_s << 1;
    QTest::newRow("two programmes") << u"programs.ts"_s << large << u"blue"_s << 1;
    QTest::newRow("default but small") << u"small.mkv"_s << small << u"red"_s << 0;
    QTest::newRow("with a cover") << u"covered.mp4"_s << large << u"blue"_s << 1;
    QTest::newRow("three") << u"three.mkv"_s << large << u"blue"_s << 1;
    QTest::newRow("motion photo") << u"motion.mp4"_s << small << u"red"_s << 0;
    QTest::newRow("stills come first") << u"shots.mkv"_s << small << u"red"_s << 1;
}

void TestVideoStreams::theDescribedStreamIsTheOneShown()
{
    QFETCH(QString, source);
    QFETCH(QSize, size);
    QFETCH(QString, colour);
    QFETCH(int, stream);
    for (const int isPlain : {0, 1}) {
        prefWrite(Prefs::prefPlainPasses, isPlain);
        const MadeSheet sheet = made(clip(source));
        QCOMPARE(sheet.outcome.status, SheetOutcome::Status::made);
        QCOMPARE(sheet.outcome.missing, 0);
        QCOMPARE(read(sheet.record, Keys::v_id, 0), stream);
        QCOMPARE(QSize(read(sheet.record, Keys::v_width, 0).value_or(0),
                       read(sheet.record, Keys::v_height, 0).value_or(0)),
                 size);
        // In the middle of the last row of pictures.
        const QImage &picture = sheet.picture;
        QCOMPARE(colourOf(picture.pixelColor(picture.width() / 2, picture.height() - 60)), colour);
        const QImage poster = read(sheet.record, Keys::imgPathStr)
                                  ? QImage(readStr(sheet.record, Keys::imgPathStr))
                                  : QImage();
        QCOMPARE(colourOf(poster.pixelColor(poster.width() / 2, poster.height() / 2)), colour);
    }
}

void TestVideoStreams::overstatedDurationsAreMeasured_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<bool>("isPlain");
    QTest::addColumn<int>("mostPasses");
    const quint32 hours = 40 * 3600;
    const auto lie = [this](const QString &source, const auto &patchIt) {
        QFile file(clip(source));
        if (!file.open(QIODevice::ReadOnly))
            return source;
        QByteArray bytes = file.readAll();
        patchIt(bytes);
        QFile lying(clip(u"lying "_s + source));
        return lying.open(QIODevice::WriteOnly) && lying.write(bytes) == bytes.size()
                   ? lying.fileName()
                   : source;
    };
    const auto patchMp4 = [hours](QByteArray &bytes) {
        patch(bytes, "mvhd", 20, bigEndian(hours * 1000));
        patch(bytes, "tkhd", 24, bigEndian(hours * 1000));
        patch(bytes, "elst", 12, bigEndian(hours * 1000));
        patch(bytes, "mdhd", 20, bigEndian(hours * 12800));
    };
    QTest::newRow("tables") << lie(u"plain.mp4"_s, patchMp4) << false << 15;
    QTest::newRow("tables, plain passes") << lie(u"plain.mp4"_s, patchMp4) << true << 15;
    QTest::newRow("fragments") << lie(u"fragments.mp4"_s, patchMp4) << false << 15;
    QTest::newRow("Matroska") << lie(u"plain.mkv"_s, [hours](QByteArray &bytes) {
        patch(bytes, "\x44\x89\x88", 3, bigEndian(double(hours) * 1000));
    }) << false << 20;
}

void TestVideoStreams::overstatedDurationsAreMeasured()
{
    QFETCH(QString, source);
    QFETCH(bool, isPlain);
    QFETCH(int, mostPasses);
    prefWrite(Prefs::prefPlainPasses, isPlain ? 1 : 0);
    const MadeSheet sheet = made(source);
    QCOMPARE(sheet.outcome.status, SheetOutcome::Status::made);
    QCOMPARE(sheet.outcome.statedDuration, 40 * 3600);
    QCOMPARE(sheet.outcome.measuredDuration, 8);
    QCOMPARE(sheet.outcome.missing, 0);
    QCOMPARE(read(sheet.record, Keys::w_duration), 8.0);
    QVERIFY(durationNote(sheet.outcome).contains(u"40h"_s));
    QVERIFY2(sheet.passes > 1 && sheet.passes <= mostPasses,
             qPrintable(QString::number(sheet.passes)));
}

QTEST_MAIN(TestVideoStreams)
#include "test_videoStreams.moc"
