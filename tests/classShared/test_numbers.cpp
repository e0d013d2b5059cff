#include "classShared/durations.h"
#include "classShared/lineLog.h"
#include "classShared/numbers.h"
#include "classShared/sizes.h"

#include <QTest>

#include <limits>

using namespace vignar;
using namespace Qt::StringLiterals;

class NumbersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsCommonDivisor()
    {
        QCOMPARE(nbsSousMultipleCommun(720, 576, 16, false), 16);
        QCOMPARE(nbsSousMultipleCommun(720, 576, 0, false), -1);
        QCOMPARE(nbsSousMultipleCommun(90, 60, 15, true), 10);     // Odd, but even wanted.
        QCOMPARE(nbsSousMultipleCommun(1000, 600, 16, false), 20); // The first within a third.
        QCOMPARE(nbsSousMultipleCommun(9, 27, 16, false), 9);      // Below.
        QCOMPARE(nbsSousMultipleCommun(29, 58, 16, false), 29);    // Above.
        QCOMPARE(nbsSousMultipleCommun(127, 254, 16, false), 127); // A listed prime.
        QCOMPARE(nbsSousMultipleCommun(61, 122, 16, false), 1);    // An unlisted one.
        QCOMPARE(nbsSousMultipleCommun(641, 480, 16, true), -1);
        QCOMPARE(nbsSousMultipleCommun(64, 32, 16, true), 16);
    }

    void wholeNumbersAreRoundedAndLimited()
    {
        QCOMPARE(nbMultipleArrondi(25, 10), 30);
        QCOMPARE(nbMultipleArrondi(24, 10), 20);
        QCOMPARE(nbMultipleArrondi(7, 5), 10); // Half of 5 counts as 2.
        QCOMPARE(secondesStr2Int(u"1h02'05\""_s), 3725);
        QCOMPARE(secondesStr2Int(u"90 s"_s), 90);
        QCOMPARE(secondesStr2Int(u"99999999999"_s), 2147483647);
        QCOMPARE(secondesStr2Int(u"9999999h00'00\""_s), 2147483647);
        // 700 MB are 5872025.6 kilobits; 90 minutes of sound take 1036800 of them.
        QCOMPARE(bitrateLimited(5400, 700), 895);
        QCOMPARE(bitrateLimited(0, 700), 2147483647);
    }

    void numbers_data()
    {
        QTest::addColumn<float>("found");
        QTest::addColumn<float>("expected");
        QTest::newRow("unit behind") << str2Float(u"25 fps"_s) << 25.0F;
        QTest::newRow("blanks within") << str2Float(u" 1 000.5"_s) << 1000.5F;
        QTest::newRow("below the thousandth") << str2Float(u"-3.1415"_s) << -3.1414F;
        QTest::newRow("exponent") << str2Float(u"1e3"_s) << 1000.0F;
        QTest::newRow("no exponent") << str2Float(u"12end"_s) << 12.0F;
        QTest::newRow("comma ends it") << str2Float(u"1,5"_s) << 1.0F;
        QTest::newRow("letters only") << str2Float(u"inf nan"_s) << 0.0F;
        QTest::newRow("too large") << str2Float(u"1e99"_s) << std::numeric_limits<float>::max();

        QTest::newRow("fraction in a text") << fractionStr2Float(u"DAR 16:10"_s) << 1.6F;
        QTest::newRow("fraction too small") << fractionStr2Float(u"1:20"_s) << 1.0F;
        QTest::newRow("fraction of nothing") << fractionStr2Float(u"16:0"_s) << 1.0F;

        QTest::newRow("version") << versionStr2Float(u"10.6.8"_s) << 10.0608F;

        QTest::newRow("rounded") << nbArrondi(2.345F, 2) << 2.35F;
        QTest::newRow("negative rounded") << nbArrondi(-2.345F, 2) << -2.35F;
        QTest::newRow("negative to whole numbers") << nbArrondi(-2.7F, 0) << -2.0F;
        QTest::newRow("half to whole numbers") << nbArrondi(2.5F, 0) << 3.0F;
        QTest::newRow("beyond single precision") << nbArrondi(1e30F, 20) << 1e30F;
        QTest::newRow("trimmed") << nbTrimmed(-2.79F, 1) << -2.7F;

        const auto &seconds = timecodeStr2Float;
        QTest::newRow("hours, minutes, seconds") << seconds(u"01:02:03.5"_s) << 3723.5F;
        QTest::newRow("decimal comma") << seconds(u"01:02:03,5"_s) << 3723.5F;
        QTest::newRow("days") << seconds(u"1:00:00:00"_s) << 86400.0F;
        QTest::newRow("frames of a rate") << seconds(u"00:00:12.15/25"_s) << 12.6F;
        QTest::newRow("frames of no rate") << seconds(u"00:00:12.15/0"_s) << 12.0F;
        QTest::newRow("text behind") << seconds(u"  00:01:00 start: 5"_s) << 60.0F;
        QTest::newRow("plain seconds") << seconds(u"12,5"_s) << 12.5F;
        QTest::newRow("two fields") << seconds(u"01:30"_s) << 0.0F;

        QTest::newRow("kilobytes") << poidsConvert(1536, QString()) << 1.5F;
        QTest::newRow("gigabytes") << poidsConvert(3LL << 30, u"G"_s) << 3.0F;
        QTest::newRow("bytes") << poidsConvert(1536, u"o"_s) << 1536.0F;
        QTest::newRow("negative bytes") << poidsConvert(-1536, u"M"_s) << -1536.0F;
    }
    void numbers()
    {
        QFETCH(float, found);
        QTEST(found, "expected");
    }

    void texts_data()
    {
        QTest::addColumn<QString>("found");
        QTest::addColumn<QString>("expected");
        QTest::newRow("nearly 16:9") << float2FractionStr(1.78F) << u"16:9"_s;
        QTest::newRow("nearly 4:3") << float2FractionStr(1.3333F) << u"4:3"_s;
        QTest::newRow("nearly square") << float2FractionStr(0.985F) << u"1:1"_s;
        QTest::newRow("too small") << float2FractionStr(-0.05F) << u"1:1"_s;
        QTest::newRow("in single precision") << float2FractionStr(2.35F) << u"47:20"_s;
        QTest::newRow("no number")
            << float2FractionStr(std::numeric_limits<float>::quiet_NaN()) << u"1:1"_s;

        QTest::newRow("last field") << ASTID(u"a,b,c"_s, u","_s, lastField) << u"c"_s;
        QTest::newRow("last but one") << ASTID(u"a,b,c"_s, u","_s, lastButOneField) << u"b"_s;
        QTest::newRow("no such field") << ASTID(u"a,b"_s, u","_s, 2) << u"a,b"_s;
        QTest::newRow("whole number") << ASTID(u"-12"_s, u"-"_s, 1) << u"-12"_s;
        QTest::newRow("as a float is written")
            << ASTID(u"12.500000"_s, u"."_s, 0) << u"12.500000"_s;
        QTest::newRow("not as a float is written") << ASTID(u"12.5"_s, u"."_s, 0) << u"12"_s;

        QTest::newRow("minutes") << duree2MinutesStr(7.3F) << u"-07.3'"_s;
        QTest::newRow("tie as printf rounds") << duree2MinutesStr(0.25F) << u"-00.2'"_s;
        QTest::newRow("no minutes") << duree2MinutesStr(-1.0F) << u""_s;
        QTest::newRow("hours") << duree2HmsStr(3725) << u"1h02'05\""_s;

        const auto &timecode = duree2TimecodeStr;
        QTest::newRow("hundredths") << timecode(3725.05F, 2, true) << u"01:02:05.05"_s;
        QTest::newRow("no decimals, no padding") << timecode(3725.05F, 0, true) << u"1:02:05"_s;
        QTest::newRow("thousandths at most") << timecode(0.0625F, 9, false) << u"0:00:00.062"_s;
        QTest::newRow("cut, not rounded") << timecode(59.96875F, 1, false) << u"0:00:59.9"_s;
        QTest::newRow("ten hours") << timecode(36000.0F, 1, true) << u"10:00:00.0"_s;
    }
    void texts()
    {
        QFETCH(QString, found);
        QTEST(found, "expected");
    }

    void noticesLostTimecodeOnlyInDetail()
    {
        QStringList noticed;
        setNoticeHandler([&](const QString &, const QString &text, int) { noticed += text; });
        timecodeStr2Float(u"01:30"_s);
        setDebug(true);
        timecodeStr2Float(u"01:30"_s);
        timecodeStr2Float(u"00:00:00"_s);
        setDebug(false);
        setNoticeHandler({});
        QCOMPARE(noticed, QStringList{u"…à revoir :-( returnedFloat = 0.000000"_s});
    }
};

QTEST_APPLESS_MAIN(NumbersTest)
#include "test_numbers.moc"
