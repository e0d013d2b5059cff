#include "sheet/excerpts.h"
#include "sheet/indexFixture.h"

#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;
using Outcome = IntraSearch::Outcome;

/// What the cues and Blocks of a Matroska file tell against what ffmpeg finds by decoding.
class TestMatroskaIndex : public QObject
{
    Q_OBJECT

    MadeVideos m_made;

    std::unique_ptr<PictureIndex> indexOf(const QString &name) const
    {
        return PictureIndex::of(
            {{Keys::srcPathStr, m_made.path(name)}, {Keys::wrapper, u"matroska,webm"_s}});
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_made.make(u"cuts.mkv"_s, MadeVideos::moving(), MadeVideos::cuts()));
        QVERIFY(m_made.make(u"sound.mkv"_s, MadeVideos::sounding(),
                            MadeVideos::cuts() + u" -c:a pcm_s16le"_s));
    }

    void tellsWhatDecodingFinds_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("options");
        QTest::addColumn<int>("leastSyncs");
        const QString cuts = m_made.input(u"cuts.mkv"_s);
        const QString sound = m_made.input(u"sound.mkv"_s);
        const QString moving = MadeVideos::moving();
        QTest::newRow("as it is written") << cuts << u"-c copy"_s << 4;
        QTest::newRow("with sound") << sound << u"-c copy"_s << 4;
        QTest::newRow("sound first") << sound << u"-map 0:a -map 0:v -c copy"_s << 4;
        QTest::newRow("small Clusters") << sound << u"-c copy -cluster_time_limit 300"_s << 4;
        QTest::newRow("large Clusters")
            << sound << u"-c copy -cluster_size_limit 100M -cluster_time_limit 32000"_s << 4;
        QTest::newRow("cues at the front") << cuts << u"-c copy -cues_to_front 1"_s << 4;
        QTest::newRow("room for cues") << cuts << u"-c copy -reserve_index_space 4000"_s << 4;
        QTest::newRow("checksums") << cuts << u"-c copy -write_crc32 1"_s << 4;
        QTest::newRow("all intra") << moving << u"-c:v libx264 -g 1"_s << 4;
        QTest::newRow("open groups")
            << moving << u"-c:v libx264 -x264-params keyint=60:open-gop=1:bframes=5"_s << 4;
        // ffmpeg does not use it.
        QTest::newRow("a single cue") << moving << u"-c:v libx264 -g 9999"_s << 0;
        QTest::newRow("odd rate") << moving << u"-c:v libx264 -r 30000/1001 -g 91"_s << 4;
    }

    void tellsWhatDecodingFinds()
    {
        QFETCH(QString, source);
        QFETCH(QString, options);
        QFETCH(int, leastSyncs);
        const QString name = u"told.mkv"_s;
        QVERIFY(m_made.make(name, source, options));
        const auto index = indexOf(name);
        QVERIFY(index);
        QCOMPARE(m_made.firstDifference(*index, name), QString());
        // ffmpeg's reader comes to where it was sent.
        for (const double instant : {0.0, 5.13, 13.6, 20.41}) {
            const auto [outcome, picture] = intraPictureAt(*index, instant, 12);
            const double told = double(picture.shownAt) / 1000;
            if (!picture.isSync)
                continue;
            const QStringList lone =
                u"-nofind_stream_info -threads 1 -flags low_delay"_s.split(u' ') +
                excerptInput(m_made.path(name),
                             {.zero = instant, .start = told, .end = told + 0.001});
            const auto excerpt = MadeVideos::decodedTime(lone, instant);
            QVERIFY2(excerpt && std::abs(told - *excerpt) < 0.001,
                     qPrintable(QString::number(instant)));
        }
        int syncs = 0;
        QVERIFY(index->visitFrom(0, [&syncs](const CodedPicture &picture) {
            syncs += picture.isSync ? 1 : 0;
            return true;
        }));
        QVERIFY(leastSyncs > 0 ? syncs >= leastSyncs : syncs == 0);
    }

    void saysNothingWhereThereIsDoubt_data()
    {
        QTest::addColumn<QString>("options");
        QTest::newRow("no cues") << u"-c copy -live 1"_s;
        QTest::newRow("two picture tracks") << u"-map 0:v -map 0:v -c copy"_s;
        QTest::newRow("another codec") << u"-c:v mpeg4"_s;
        QTest::newRow("another container") << u"-c copy -f mp4"_s;
    }

    void saysNothingWhereThereIsDoubt()
    {
        QFETCH(QString, options);
        QVERIFY(m_made.make(u"doubt.mkv"_s, m_made.input(u"cuts.mkv"_s), options));
        QVERIFY(!indexOf(u"doubt.mkv"_s));
    }

    void doesNotTrustTheFile()
    {
        QVERIFY(m_made.make(u"whole.mkv"_s, m_made.input(u"cuts.mkv"_s),
                            u"-c copy -cues_to_front 1"_s));
        QFile file(m_made.path(u"whole.mkv"_s));
        QVERIFY(file.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
        auto index = indexOf(u"whole.mkv"_s);
        QVERIFY(index && intraPictureAt(*index, 9, 12).outcome == Outcome::found);
        // A Cluster that has moved, or begins at another time than its cue tells.
        qint64 block = 0;
        QVERIFY(index->visitFrom(9000, [&block](const CodedPicture &picture) {
            block = picture.position;
            return false;
        }));
        const QByteArray head = index->bytesAt(block - 4, 3);
        QVERIFY(file.seek(block - 4) && file.write("\x81\x01\x00", 3) == 3);
        QCOMPARE(intraPictureAt(*index, 9, 12).outcome, Outcome::unclear);
        QVERIFY(file.seek(block - 4) && file.write(head) == 3);
        QCOMPARE(intraPictureAt(*index, 9, 12).outcome, Outcome::found);
        QVERIFY(file.resize(block + 10));
        QCOMPARE(intraPictureAt(*index, 9, 12).outcome, Outcome::unclear);
        QVERIFY(!indexOf(u"whole.mkv"_s));
    }
};

QTEST_GUILESS_MAIN(TestMatroskaIndex)
#include "test_matroskaIndex.moc"
