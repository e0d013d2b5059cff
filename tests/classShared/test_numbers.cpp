#include "classShared/numbers.h"

#include <QTest>

#include <cmath>
#include <limits>

using namespace vignar;
using namespace Qt::StringLiterals;

class NumbersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsCommonDivisor_data()
    {
        QTest::addColumn<int>("a");
        QTest::addColumn<int>("b");
        QTest::addColumn<int>("asked");
        QTest::addColumn<bool>("evenOnly");
        QTest::addColumn<int>("found");
        QTest::newRow("the asked one") << 720 << 576 << 16 << false << 16;
        QTest::newRow("odd asked, even wanted") << 90 << 60 << 15 << true << 10;
        QTest::newRow("first within a third") << 1000 << 600 << 16 << false << 20;
        QTest::newRow("below") << 9 << 27 << 16 << false << 9;
        QTest::newRow("above") << 29 << 58 << 16 << false << 29;
        QTest::newRow("largest listed prime") << 127 << 254 << 16 << false << 127;
        QTest::newRow("unlisted prime") << 61 << 122 << 16 << false << 1;
        QTest::newRow("coprime, even wanted") << 641 << 480 << 16 << true << -1;
        QTest::newRow("largest even up to twice") << 64 << 32 << 16 << true << 16;
        QTest::newRow("asked for nothing") << 720 << 576 << 0 << false << -1;
    }
    void findsCommonDivisor()
    {
        QFETCH(int, a);
        QFETCH(int, b);
        QFETCH(int, asked);
        QFETCH(bool, evenOnly);
        QTEST(nbsSousMultipleCommun(a, b, asked, evenOnly), "found");
    }

    void roundsToMultiple()
    {
        QCOMPARE(nbMultipleArrondi(25, 10), 30);
        QCOMPARE(nbMultipleArrondi(24, 10), 20);
        QCOMPARE(nbMultipleArrondi(40, 10), 40);
        QCOMPARE(nbMultipleArrondi(7, 5), 10); // Half of 5 counts as 2.
    }

    void writesAspectRatio_data()
    {
        QTest::addColumn<float>("ratio");
        QTest::addColumn<QString>("text");
        QTest::newRow("nearly 16:9") << 1.78F << u"16:9"_s;
        QTest::newRow("nearly 4:3") << 1.3333F << u"4:3"_s;
        QTest::newRow("nearly square") << 0.985F << u"1:1"_s;
        QTest::newRow("too small to be one") << -0.05F << u"1:1"_s;
        QTest::newRow("cinema") << 1.85F << u"37:20"_s;
        QTest::newRow("not quite in single precision") << 2.35F << u"47:20"_s;
        QTest::newRow("no number") << std::numeric_limits<float>::quiet_NaN() << u"1:1"_s;
        QTest::newRow("endless") << std::numeric_limits<float>::infinity() << u"1:1"_s;
    }
    void writesAspectRatio()
    {
        QFETCH(float, ratio);
        QTEST(float2FractionStr(ratio), "text");
    }

    void readsVersion()
    {
        QCOMPARE(versionStr2Float(u"10.6.8"_s), 10.0608F);
        QCOMPARE(versionStr2Float(u"7.6"_s), 7.06F);
        QCOMPARE(versionStr2Float(u"1.2.3.4"_s), 1.0203F);
        QCOMPARE(versionStr2Float(u""_s), 0.0F);
    }

    void roundsAndTrims()
    {
        QCOMPARE(nbArrondi(2.345F, 2), 2.35F);
        QCOMPARE(nbArrondi(-2.345F, 2), -2.35F);
        QCOMPARE(nbArrondi(-2.7F, 0), -2.0F);
        QCOMPARE(nbArrondi(2.5F, 0), 3.0F);
        QCOMPARE(nbArrondi(1e30F, 20), 1e30F);
        QCOMPARE(nbTrimmed(-2.79F, 1), -2.7F);
        QCOMPARE(nbTrimmed(2.3F, 1), 2.3F);
    }

    void tellsNumbersFromFields()
    {
        QCOMPARE(ASTID(u"a,b,c"_s, u","_s, 0), u"a"_s);
        QCOMPARE(ASTID(u"a,b,c"_s, u","_s, lastField), u"c"_s);
        QCOMPARE(ASTID(u"a,b,c"_s, u","_s, lastButOneField), u"b"_s);
        QCOMPARE(ASTID(u"a,b"_s, u","_s, 2), u"a,b"_s);
        QCOMPARE(ASTID(u"-12"_s, u"-"_s, 1), u"-12"_s);
        QCOMPARE(ASTID(u"12.500000"_s, u"."_s, 0), u"12.500000"_s);
        QCOMPARE(ASTID(u"12.5"_s, u"."_s, 0), u"12"_s); // Not as a float is written.
        QCOMPARE(ASTID(u"a,b"_s, QString(), 0), u"a,b"_s);
        QVERIFY(!ASTID(QString(), u","_s, 0).isNull());
    }

    void readsFloat_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<float>("number");
        QTest::newRow("unit behind") << u"25 fps"_s << 25.0F;
        QTest::newRow("blanks within") << u" 1 000.5"_s << 1000.5F;
        QTest::newRow("negative") << u"-3.5"_s << -3.5F;
        QTest::newRow("negative below the thousandth") << u"-3.1415"_s << -3.1414F;
        QTest::newRow("exponent") << u"1e3"_s << 1000.0F;
        QTest::newRow("letter that begins no exponent") << u"12end"_s << 12.0F;
        QTest::newRow("comma ends it") << u"1,5"_s << 1.0F;
        QTest::newRow("sign before letters") << u"-x5"_s << 0.0F;
        QTest::newRow("letters only") << u"inf nan"_s << 0.0F;
        QTest::newRow("too large") << u"1e99"_s << std::numeric_limits<float>::max();
        QTest::newRow("null") << QString() << 0.0F;
    }
    void readsFloat()
    {
        QFETCH(QString, text);
        QTEST(str2Float(text), "number");
    }

    void readsFraction()
    {
        QCOMPARE(fractionStr2Float(u"3:2"_s), 1.5F);
        QCOMPARE(fractionStr2Float(u"DAR 16:10"_s), 1.6F);
        QCOMPARE(fractionStr2Float(u"1:20"_s), 1.0F);
        QCOMPARE(fractionStr2Float(u"16:0"_s), 1.0F);
        QCOMPARE(fractionStr2Float(u"0:0"_s), 1.0F);
        QCOMPARE(fractionStr2Float(QString()), 1.0F);
    }
};

QTEST_APPLESS_MAIN(NumbersTest)
#include "test_numbers.moc"
