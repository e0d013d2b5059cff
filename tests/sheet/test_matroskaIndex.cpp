#include "sheet/excerpts.h"
#include "sheet/intraSearch.h"
#include "sheet/pictureTimes.h"
#include "tasks/blockingRuns.h"
#include "tasks/toolPlaces.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;
using Outcome = IntraSearch::Outcome;

/// What the cues and Blocks of a Matroska file tell against what ffmpeg finds by decoding.
class TestMatroskaIndex : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    QString path(const QString &name) const { return m_folder.filePath(name); }

    bool make(const QString &name, const QString &input, const QString &options) const
    {
        QStringList arguments = u"-v error -nostdin"_s.split(u' ');
        arguments << input.split(u' ') << options.split(u' ') << u"-y"_s << path(name);
        return QProcess::execute(ffmpegPath(), arguments) == 0;
    }

    std::unique_ptr<PictureIndex> indexOf(const QString &name) const
    {
        return PictureIndex::of(
            {{Keys::srcPathStr, path(name)}, {Keys::wrapper, u"matroska,webm"_s}});
    }

    /// Seconds into the source of the first intra picture that a form of the pass gives.
    static std::optional<double> decodedTime(const QStringList &input, double instant)
    {
        const QStringList plain{ffmpegPath(), u"-ss"_s, QString::number(instant, 'f', 2)};
        QStringList pass{ffmpegPath()};
        pass << input << u"-t"_s << u"12"_s << u"-vf"_s
             << u"select=eq(pict_type\\,I)"_s + timeTeller(0) << u"-vframes"_s << u"1"_s << u"-f"_s
             << u"null"_s << u"-an"_s << u"-"_s;
        return toldTime(taskArray(pass), plain + pass.mid(1), 0);
    }

private Q_SLOTS:
    void initTestCase()
    {
        // Cuts soon after a key picture make intra pictures that are none.
        const QString cuts = u"-vf negate=enable='lt(mod(t\\,3.4)\\,1.7)' -c:v libx264 -preset fast"
                             " -x264-params keyint=200:min-keyint=199:scenecut=100"_s;
        QVERIFY(make(u"cuts.mkv"_s, u"-f lavfi -i testsrc2=s=96x64:r=25:d=30"_s, cuts));
        QVERIFY(make(u"sound.mkv"_s,
                     u"-f lavfi -i testsrc2=s=96x64:r=25:d=30 -f lavfi -i sine=d=30"_s,
                     cuts + u" -c:a pcm_s16le"_s));
    }

    void tellsWhatDecodingFinds_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("options");
        QTest::addColumn<int>("leastSyncs");
        const QString encoded = u"-f lavfi -i testsrc2=s=96x64:r=25:d=30 -c:v libx264"_s;
        QTest::newRow("as it is written") << u"cuts.mkv"_s << u"-c copy"_s << 4;
        QTest::newRow("with sound") << u"sound.mkv"_s << u"-c copy"_s << 4;
        QTest::newRow("sound first") << u"sound.mkv"_s << u"-map 0:a -map 0:v -c copy"_s << 4;
        QTest::newRow("small Clusters")
            << u"sound.mkv"_s << u"-c copy -cluster_time_limit 300"_s << 4;
        QTest::newRow("large Clusters")
            << u"sound.mkv"_s << u"-c copy -cluster_size_limit 100M -cluster_time_limit 32000"_s
            << 4;
        QTest::newRow("cues at the front") << u"cuts.mkv"_s << u"-c copy -cues_to_front 1"_s << 4;
        QTest::newRow("room for cues")
            << u"cuts.mkv"_s << u"-c copy -reserve_index_space 4000"_s << 4;
        QTest::newRow("checksums") << u"cuts.mkv"_s << u"-c copy -write_crc32 1"_s << 4;
        QTest::newRow("all intra") << QString() << encoded + u" -g 1"_s << 4;
        QTest::newRow("open groups")
            << QString() << encoded + u" -x264-params keyint=60:open-gop=1:bframes=5"_s << 4;
        // ffmpeg does not use it.
        QTest::newRow("a single cue") << QString() << encoded + u" -g 9999"_s << 0;
        QTest::newRow("odd rate") << QString() << encoded + u" -r 30000/1001 -g 91"_s << 4;
    }

    void tellsWhatDecodingFinds()
    {
        QFETCH(QString, source);
        QFETCH(QString, options);
        QFETCH(int, leastSyncs);
        const QString name = u"told.mkv"_s;
        const QStringList words = options.split(u' ');
        QVERIFY(source.isEmpty() ? make(name, words.mid(0, 4).join(u' '), words.mid(4).join(u' '))
                                 : make(name, u"-i "_s + path(source), options));
        const auto index = indexOf(name);
        QVERIFY(index);
        for (const double instant : {0.0, 0.04, 2.0, 3.4, 5.13, 7.9, 13.6, 20.41, 29.5}) {
            const QString seek = QString::number(instant, 'f', 2);
            const auto [outcome, picture] = intraPictureAt(*index, instant, 12);
            const auto decoded = decodedTime({u"-ss"_s, seek, u"-i"_s, path(name)}, instant);
            QVERIFY2(outcome != Outcome::unclear, qPrintable(seek));
            QCOMPARE(outcome == Outcome::found, decoded.has_value());
            if (!decoded)
                continue;
            const double told = double(picture.shownAt) / 1000;
            QVERIFY2(std::abs(told - *decoded) < 0.001,
                     qPrintable(u"%1: %2, %3"_s.arg(instant).arg(told).arg(*decoded)));
            if (!picture.isSync)
                continue;
            const QStringList lone =
                u"-nofind_stream_info -threads 1 -flags low_delay"_s.split(u' ') +
                excerptInput(path(name), {.zero = instant, .start = told, .end = told + 0.001});
            const auto excerpt = decodedTime(lone, instant);
            QVERIFY2(excerpt && std::abs(told - *excerpt) < 0.001, qPrintable(seek));
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
        QVERIFY(make(u"doubt.mkv"_s, u"-i "_s + path(u"cuts.mkv"_s), options));
        QVERIFY(!indexOf(u"doubt.mkv"_s));
    }

    void doesNotTrustTheFile()
    {
        QVERIFY(
            make(u"whole.mkv"_s, u"-i "_s + path(u"cuts.mkv"_s), u"-c copy -cues_to_front 1"_s));
        QFile file(path(u"whole.mkv"_s));
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
