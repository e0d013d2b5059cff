#include "analysis/mpeginfoFunction.h"
#include "classShared/sourceDico.h"
#include "settings/stringTables.h"
#include "tasks/toolPlaces.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <sys/resource.h>
#include <sys/stat.h>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

const QByteArray sequenceEnd = QByteArray::fromHex("000001b7");
const QByteArray picture = QByteArray::fromHex("00000100000f");
const QByteArray packStart = QByteArray::fromHex("000001ba2100010001c33367");
constexpr int pal = 3;

/// 720 × 576 at 8000 kb/s, wide screen.
QByteArray sequence(int rateCode = pal)
{
    return QByteArray::fromHex("000001b32d0240") + char(0x30 | rateCode) +
           QByteArray::fromHex("1388"
                               "2000");
}

QByteArray group(quint32 hours, quint32 minutes, quint32 seconds, quint32 pictures)
{
    const quint32 bits = hours << 26 | minutes << 20 | 1U << 19 | seconds << 13 | pictures << 7;
    QByteArray bytes = QByteArray::fromHex("000001b8");
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += char(bits >> shift);
    return bytes;
}

QByteArray packet(int code, const QByteArray &header, const QByteArray &payload)
{
    const qsizetype length = header.size() + payload.size();
    return QByteArray::fromHex("000001") + char(code) + char(length >> 8) + char(length) + header +
           payload;
}

QList<int> parts(mpegInfo::timecode code)
{
    return {code.hours, code.minutes, code.seconds, code.pictures};
}

} // namespace

class MpegInfoTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    QString fileOf(const QByteArray &bytes, qint64 gapAfter = 0, const QByteArray &tail = {})
    {
        QFile file(m_folder.filePath(u"a 100%@'\n.mpg"_s));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) < 0)
            return {};
        if (gapAfter > 0 && (!file.resize(bytes.size() + gapAfter) || !file.seek(file.size())))
            return {};
        file.write(tail);
        return file.fileName();
    }

private Q_SLOTS:
    void readsWhatFfmpegWrites_data()
    {
        QTest::addColumn<QString>("rate");
        QTest::addColumn<QString>("options");
        QTest::addColumn<QString>("expected");
        const QString pff = localised(u"PFF"_s, fieldsTable);
        QTest::newRow("MPEG-1 stream")
            << u"25"_s << u"-c:v mpeg1video -f mpeg1video"_s << u"mpeg1video 25 4:3 i - 3 0"_s;
        QTest::newRow("MPEG-2 stream") << u"24"_s << u"-c:v mpeg2video -f mpeg2video"_s
                                       << u"mpeg2video 24 16:9 %1 yuv420p 3 0"_s.arg(pff);
        QTest::newRow("interlaced 4:2:2")
            << u"50"_s << u"-c:v mpeg2video -pix_fmt yuv422p -flags +ilme -f mpeg2video"_s
            << u"mpeg2video 50 16:9 i yuv422p 3 0"_s;
        QTest::newRow("MPEG-1 in packs")
            << u"25"_s << u"-c:v mpeg1video -f mpeg"_s << u"mpeg 25 4:3 i - - -"_s;
        QTest::newRow("MPEG-2 in packs")
            << u"60"_s << u"-c:v mpeg2video -f vob"_s << u"mpeg 60 16:9 %1 yuv420p - -"_s.arg(pff);
    }
    void readsWhatFfmpegWrites()
    {
        QFETCH(QString, rate);
        QFETCH(QString, options);
        const QString clip = fileOf({});
        const QString input = u"-v error -y -f lavfi -i testsrc=size=352x288:duration=3:rate="_s;
        const QString encoding = u" -aspect 16:9 -b:v 1500k -maxrate 1500k -bufsize 800k "_s;
        const QString arguments = input + rate + encoding + options;
        QCOMPARE(QProcess::execute(ffmpegPath(), arguments.split(u' ') << clip), 0);

        const Dico dico = mpeginfoFunction::mpegInfoDico(clip).value_or(Dico());
        QCOMPARE(read(dico, Keys::v_width, 0), 352);
        QCOMPARE(read(dico, Keys::v_height, 0), 288);
        QCOMPARE(read(dico, Keys::v_bitrate, 0), 1500);
        QStringList texts;
        for (const QString &key :
             QStringList{Keys::wrapper, Keys::v_fps(0), Keys::v_dar(0), Keys::v_fields(0),
                         Keys::v_chroma(0), Keys::w_duration, Keys::w_offset})
            texts += dico.value(key, u"-"_s).toString();
        QTEST(texts.join(u' '), "expected");
    }

    void saysWhyItRefuses_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("error");
        const QString noMpeg = u"Not an MPEG-2 file"_s;
        const QString noGop = u"No GOP found"_s;
        QTest::newRow("empty") << QByteArray() << u"File of length 0"_s;
        QTest::newRow("text") << QByteArray("ftypisom and more") << noMpeg;
        QTest::newRow("three bytes") << sequence().first(3) << noMpeg;
        QTest::newRow("begins with a group") << group(0, 0, 0, 0) + sequence() << noMpeg;
        QTest::newRow("cut header") << sequence().first(9) << noGop;
        QTest::newRow("no group") << sequence() + picture << noGop;
        QTest::newRow("sequence end first")
            << sequence() + sequenceEnd + group(0, 0, 0, 0) << noGop;
        QTest::newRow("pack without video")
            << packStart + packet(0xC0, "\x0F", sequence() + group(0, 0, 0, 0)) << noMpeg;
        // What follows the end would complete the zero that stands for it.
        QTest::newRow("ended program")
            << packStart + QByteArray::fromHex("000001b9") + QByteArray(3000, 'x') +
                   packet(0xE0, "\x0F", sequence().sliced(1) + group(0, 0, 0, 0))
            << noMpeg;
    }
    void saysWhyItRefuses()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, error);
        QCOMPARE(mpegInfo().readInformations(fileOf(bytes)), error);
        QVERIFY(!mpeginfoFunction::mpegInfoDico(fileOf(bytes)));
    }

    void opensRegularFilesOnly()
    {
        mpegInfo reader;
        QCOMPARE(reader.readInformations(m_folder.filePath(u"none"_s)), u"File not found"_s);
        QCOMPARE(reader.readInformations(m_folder.path()), u"File not found"_s);
        const QString pipe = m_folder.filePath(u"pipe"_s);
        QCOMPARE(mkfifo(QFile::encodeName(pipe), 0600), 0);
        QCOMPARE(reader.readInformations(pipe), u"File of length 0"_s);
        QCOMPARE(reader.readInformations(u"/dev/zero"_s), u"File of length 0"_s);
        const QString path = fileOf(sequence());
        rlimit before{};
        getrlimit(RLIMIT_NOFILE, &before);
        const rlimit none{0, before.rlim_max}; // Not even root opens a file without a descriptor.
        setrlimit(RLIMIT_NOFILE, &none);
        const QString error = reader.readInformations(path);
        setrlimit(RLIMIT_NOFILE, &before);
        QCOMPARE(error, u"Reading error"_s);
    }

    void measuresFromTheFirstGroupToTheLastPicture_data()
    {
        QTest::addColumn<int>("rateCode");
        QTest::addColumn<QByteArray>("first");
        QTest::addColumn<QByteArray>("last");
        QTest::addColumn<int>("pictures");
        QTest::addColumn<QString>("durationAndOffset");
        QTest::newRow("pictures count as seconds of the offset")
            << pal << group(0, 0, 1, 12) << group(0, 0, 4, 0) << 1 << u"2.56 13"_s;
        QTest::newRow("carries, over midnight")
            << pal << group(23, 59, 59, 0) << group(23, 59, 59, 24) << 26 << u"2 86399"_s;
        QTest::newRow("a whole day counts as none")
            << pal << group(0, 0, 0, 0) << group(23, 59, 59, 24) << 1 << u"0 0"_s;
        QTest::newRow("borrows from every field")
            << pal << group(1, 59, 59, 24) << group(3, 0, 0, 0) << 0 << u"3600.04 7223"_s;
        QTest::newRow("29.97 has 29 pictures a second")
            << 4 << group(0, 0, 0, 0) << group(0, 0, 0, 0) << 58 << u"2 0"_s;
        QTest::newRow("reserved rate counts no pictures")
            << 9 << group(0, 0, 0, 5) << group(0, 0, 7, 0) << 99 << u"7 5"_s;
        QTest::newRow("impossible fields")
            << pal << group(31, 63, 63, 63) << group(0, 0, 0, 0) << 1 << u"57354.52 115506"_s;
    }
    void measuresFromTheFirstGroupToTheLastPicture()
    {
        QFETCH(int, rateCode);
        QFETCH(QByteArray, first);
        QFETCH(QByteArray, last);
        QFETCH(int, pictures);
        // The seams of the blocks that are read backward fall everywhere in the last group.
        for (const int filling : {0, 2040, 2041, 2042, 2043, 2044, 2048, 5000}) {
            const Dico dico =
                mpeginfoFunction::mpegInfoDico(fileOf(sequence(rateCode) + first + picture +
                                                      QByteArray(filling, '\xFF') + last +
                                                      picture.repeated(pictures)))
                    .value_or(Dico());
            QTEST(u"%1 %2"_s.arg(read(dico, Keys::w_duration).value_or(-1), 0, 'g', 9)
                      .arg(read(dico, Keys::w_offset).value_or(-1)),
                  "durationAndOffset");
        }
    }

    void findsTheVideoInPackets_data()
    {
        QTest::addColumn<QByteArray>("packets");
        const QByteArray video = sequence() + group(0, 0, 0, 0);
        const QByteArray pes = QByteArray::fromHex("80c1053100037bb1");
        const auto split = [&](const QByteArray &header, const QByteArray &between = {}) {
            QByteArray bytes;
            for (qsizetype at = 0; at < video.size(); at += 3)
                bytes += packet(0xE0, header, video.mid(at, 3)) + between;
            return bytes;
        };
        QTest::newRow("MPEG-2") << packet(0xEF, pes, video);
        QTest::newRow("MPEG-2, cut anywhere") << split(pes);
        QTest::newRow("MPEG-2, cut, over many blocks")
            << split(pes, packet(0xBD, {}, QByteArray(2000, 'x')));
        QTest::newRow("MPEG-2 without video")
            << packet(0xE0, pes, {}) + packet(0xE0, {}, {}) + picture + packet(0xE0, pes, video);
        QTest::newRow("MPEG-2 header longer than its packet")
            << QByteArray::fromHex("000001e000048000ff") + QByteArray(255, 'x') +
                   packet(0xE0, pes, video);
        QTest::newRow("MPEG-1") << split("\x0F");
        QTest::newRow("MPEG-1 with a buffer size") << split("\x60\x2E\x0F");
        QTest::newRow("MPEG-1 with a time stamp") << split(QByteArray::fromHex("602e2100037bb1"));
        QTest::newRow("MPEG-1 with two")
            << split(QByteArray::fromHex("3100037bb11100035f91"), packet(0xBE, {}, "x"));
    }
    void findsTheVideoInPackets()
    {
        QFETCH(QByteArray, packets);
        mpegInfo reader;
        QCOMPARE(reader.readInformations(fileOf(packStart + packets)), QString());
        QVERIFY(reader.isMuxed() && reader.isWideScreen() && !reader.isMPeg2());
        QCOMPARE(reader.horizontalSize(), 720);
        QCOMPARE(reader.verticalSize(), 576);
        QCOMPARE(reader.frameRate(), 25.0);
        QCOMPARE(reader.bitRate(), 8000000L);
        QCOMPARE(parts(reader.duration()), parts({}));
    }

    void readsBytesAndBits()
    {
        const QString path = fileOf(QByteArray::fromHex("a5f00000000001b312345678000001"));
        mpegInfo reader = mpeginfoFunction::mpegInfo(path);
        QCOMPARE(reader.getBits(3), 0b101U);
        QCOMPARE(reader.getBits(9), 0b001011111U);
        QCOMPARE(reader.findCode(), 0xB3);
        QCOMPARE(reader.getLong(), 0x12345678U);
        QCOMPARE(reader.findCode(), mpegInfo::sequenceEndCode);
        QCOMPARE(reader.findRealCode(), 0);
        reader.skipRealByte(5000);
        QCOMPARE(reader.getRealByte(), 0);
        QVERIFY(reader.isAtEnd());
        QVERIFY(!reader.findCodeBackward(0xB8));
        QVERIFY(!mpegInfo().findCodeBackward(0xB8));

        // A file that is cut while it is read ends there.
        reader = mpegInfo(fileOf(sequence() + group(0, 0, 0, 0), 10000));
        QCOMPARE(reader.getLong(), 0x1B3U);
        QVERIFY(QFile::resize(path, 100));
        reader.skipRealByte(5000);
        QVERIFY(reader.isAtEnd());
    }

    void readsLittleOfLargeFiles()
    {
        constexpr qint64 gap = 5'000'000'000;
        const QByteArray video = sequence() + group(0, 0, 0, 0);
        mpegInfo reader;
        QCOMPARE(
            reader.readInformations(fileOf(video, gap, group(1, 0, 0, 0) + picture.repeated(1000))),
            QString());
        QCOMPARE(parts(reader.duration()), QList<int>({1, 0, 40, 0}));
        QVERIFY(reader.bytesRead() < 12 * 2048);
        QCOMPARE(reader.readInformations(fileOf("RIFF", gap)), u"Not an MPEG-2 file"_s);
        QVERIFY(reader.bytesRead() <= 2048);
        QCOMPARE(reader.readInformations(fileOf(packStart, gap, video)), u"Not an MPEG-2 file"_s);
        QVERIFY(reader.bytesRead() <= mpegInfo::headerSearchLimit + 2048);
        QCOMPARE(reader.readInformations(fileOf(video, gap)), u"No GOP found"_s);
        QVERIFY(reader.bytesRead() <= mpegInfo::lastGopSearchLimit + 2 * 2048);
    }
};

QTEST_GUILESS_MAIN(MpegInfoTest)
#include "test_mpegInfo.moc"
