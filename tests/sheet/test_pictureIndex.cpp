#include "sheet/indexFixture.h"

#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;
using Outcome = IntraSearch::Outcome;

/// Of any time scale.
class Clock : public PictureIndex
{
public:
    explicit Clock(qint64 ticksASecond) : PictureIndex(nullptr) { m_ticksASecond = ticksASecond; }
    bool visitFrom(qint64, const std::function<bool(const CodedPicture &)> &) override
    {
        return false;
    }
    bool seeksAnywhere() const override { return false; }
};

/// What the tables of an MP4 file tell against what ffmpeg finds by decoding.
class TestPictureIndex : public QObject
{
    Q_OBJECT

    MadeVideos m_made;

    std::unique_ptr<PictureIndex> indexOf(const QString &name) const
    {
        return PictureIndex::of(
            {{Keys::srcPathStr, m_made.path(name)}, {Keys::wrapper, u"mov,mp4,m4a,3gp,3g2,mj2"_s}});
    }

private Q_SLOTS:
    void instantsOfHeadersThatLie()
    {
        QCOMPARE(ticksOf(12.34, Clock(90'000)), 1'110'600);
        QCOMPARE(ticksOf(1.0 / 3, Clock(3)), 1);
        QCOMPARE(ticksOf(2147483647.0, Clock(250'000)), 536'870'911'750'000);
        for (const double instant : {1e13, 1e300, double(qInf())}) {
            const qint64 far = ticksOf(instant, Clock(4'294'967'295));
            QVERIFY(far > (qint64{1} << 60) && far + far > far);
            QCOMPARE(ticksOf(-instant, Clock(4'294'967'295)), -far);
        }
    }

    void initTestCase()
    {
        QVERIFY(m_made.make(u"cuts.mp4"_s, MadeVideos::sounding(),
                            MadeVideos::cuts() + u" -c:a aac"_s));
    }

    void tellsWhatDecodingFinds_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("options");
        const QString encoded = MadeVideos::moving();
        const QString remuxed = m_made.input(u"cuts.mp4"_s);
        QTest::newRow("cuts") << remuxed << u"-c copy"_s;
        QTest::newRow("tables at the front") << remuxed << u"-c copy -movflags faststart"_s;
        QTest::newRow("no edit list") << remuxed << u"-c copy -use_editlist 0"_s;
        QTest::newRow("delays below zero")
            << remuxed << u"-c copy -movflags negative_cts_offsets"_s;
        QTest::newRow("QuickTime") << remuxed << u"-c copy -f mov"_s;
        QTest::newRow("all intra") << encoded << u"-c:v libx264 -g 1"_s;
        QTest::newRow("no order but one") << encoded << u"-c:v libx264 -bf 0 -g 70"_s;
        QTest::newRow("one key picture") << encoded << u"-c:v libx264 -g 9999"_s;
        QTest::newRow("several slices") << encoded << u"-c:v libx264 -slices 4 -g 55"_s;
        QTest::newRow("refreshed a column at a time")
            << encoded << u"-c:v libx264 -x264-params keyint=50:intra-refresh=1"_s;
        QTest::newRow("HEVC") << encoded
                              << u"-c:v libx265 -preset ultrafast -x265-params "
                                 "log-level=error:keyint=90:open-gop=1:repeat-headers=1"_s;
        QTest::newRow("HEVC with cuts")
            << encoded
            << u"-vf negate=enable='lt(mod(t\\,3.4)\\,1.7)' -c:v libx265 -preset fast -x265-params "
               "log-level=error:keyint=250:min-keyint=249:scenecut=80:slices=2 -tag:v hvc1"_s;
        QTest::newRow("VP9") << encoded
                             << u"-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -g 80"_s;
        QTest::newRow("VP9 in two passes")
            << encoded << u"-c:v libvpx-vp9 -deadline good -cpu-used 4 -auto-alt-ref 6 -g 90"_s;
        QTest::newRow("AV1") << encoded << u"-c:v libsvtav1 -preset 10 -g 75"_s;
        QTest::newRow("another AV1") << encoded << u"-c:v libaom-av1 -cpu-used 8 -g 75"_s;
        QTest::newRow("ProRes") << encoded << u"-c:v prores_ks -f mov"_s;
        QTest::newRow("odd rate") << encoded << u"-r 30000/1001 -c:v libx264 -g 91 -bf 5"_s;
    }

    void tellsWhatDecodingFinds()
    {
        QFETCH(QString, source);
        QFETCH(QString, options);
        QVERIFY(m_made.make(u"told.mp4"_s, source, options));
        const auto index = indexOf(u"told.mp4"_s);
        QVERIFY(index);
        QCOMPARE(m_made.firstDifference(*index, u"told.mp4"_s), QString());
    }

    void saysNothingWhereThereIsDoubt_data()
    {
        QTest::addColumn<QString>("options");
        QTest::newRow("fragments") << u"-c copy -movflags frag_keyframe"_s;

        QTest::newRow("an edit that cuts") << u"-ss 2 -c copy -map 0:v"_s;
        QTest::newRow("two picture tracks") << u"-map 0:v -map 0:v -c copy"_s;
        QTest::newRow("another codec") << u"-c:v mpeg4"_s;
    }

    void saysNothingWhereThereIsDoubt()
    {
        QFETCH(QString, options);
        QVERIFY(m_made.make(u"doubt.mp4"_s, m_made.input(u"cuts.mp4"_s), options));
        QVERIFY(!indexOf(u"doubt.mp4"_s));
    }

    void doesNotTrustTheTables()
    {
        QVERIFY(m_made.make(u"whole.mp4"_s, m_made.input(u"cuts.mp4"_s),
                            u"-c copy -movflags faststart"_s));
        QFile file(m_made.path(u"whole.mp4"_s));
        QVERIFY(file.open(QIODevice::ReadWrite));
        // Cut within the pictures: what is left is told, what is missing is not.
        QVERIFY(file.resize(file.size() / 2));
        auto index = indexOf(u"whole.mp4"_s);
        QVERIFY(!index || intraPictureAt(*index, 29, 12).outcome == Outcome::unclear);
        QVERIFY(file.resize(2000));
        QVERIFY(!indexOf(u"whole.mp4"_s));
        QVERIFY(!indexOf(u"none.mp4"_s));
    }
};

QTEST_GUILESS_MAIN(TestPictureIndex)
#include "test_pictureIndex.moc"
