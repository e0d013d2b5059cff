#include "classShared/colours.h"
#include "classShared/format.h"
#include "classShared/htmlText.h"
#include "classShared/lineLog.h"

#include <QTest>

#include <algorithm>
#include <clocale>
#include <limits>
#include <thread>
#include <vector>

using namespace vignar;
using namespace Qt::StringLiterals;

class FormatAndTextsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fills_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const QString name = u"50%@ %s%n.mov"_s;
        QTest::newRow("value like a format")
            << filled(u"%@|%@", name, u"next"_s) << u"50%@ %s%n.mov|next"_s;
        QTest::newRow("missing value") << filled(u"%ld of %ld %%", 1) << u"1 of %ld %"_s;
        QTest::newRow("surplus value") << filled(u"%d", 1, 2) << u"1"_s;
        QTest::newRow("lone percent") << filled(u"isCase:%", true) << u"isCase:%"_s;
        QTest::newRow("unknown placeholders") << filled(u"%n%p%*d %d", 1) << u"%n%p%*d 1"_s;
        QTest::newRow("width beyond limits") << filled(u"%99999d", 1) << u"%99999d"_s;
        QTest::newRow("64 bits") << filled(u"%lld", 9007199254740993LL) << u"9007199254740993"_s;
        QTest::newRow("flags") << filled(u"[%-5d|%05d|%+d|%x]", 7, 7, 7, 255)
                               << u"[7    |00007|+7|ff]"_s;
        QTest::newRow("ties as printf rounds") << filled(u"%.1f %.0f", 0.25, 2.5) << u"0.2 2"_s;
        QTest::newRow("float for a whole number") << filled(u"%ld", 12.9) << u"12"_s;
        QTest::newRow("no number for a whole one")
            << filled(u"%ld", std::numeric_limits<double>::quiet_NaN()) << u"0"_s;
        QTest::newRow("too large for a whole number")
            << filled(u"%ld", 1e300) << u"9223372036854775807"_s;
        QTest::newRow("whole number for a float") << filled(u"%.2f", 3) << u"3.00"_s;
        QTest::newRow("text for a number") << filled(u"%ld %ld", u"12"_s, u"N/A"_s) << u"12 N/A"_s;
        QTest::newRow("padded text") << filled(u"%-4s|%.2s", u"ab"_s, u"abc"_s) << u"ab  |ab"_s;
        QTest::newRow("null text") << filled(u"'%@'", QString()) << u"'(null)'"_s;
        QTest::newRow("empty text") << filled(u"'%@'", u""_s) << u"''"_s;
    }
    void fills()
    {
        QFETCH(QString, text);
        QTEST(text, "expected");
    }

    void longestNumberIsWhole()
    {
        const QString text = filled(u"%.99f", std::numeric_limits<double>::lowest());
        QCOMPARE(text.size(), 1 + 309 + 1 + 99);
    }

    void writesPointInEveryLocale()
    {
        const char *names[] = {"fr_FR.UTF-8", "de_DE.UTF-8", "fr_FR.utf8"};
        const bool isSet = std::any_of(std::begin(names), std::end(names), [](const char *name) {
            return std::setlocale(LC_ALL, name) != nullptr;
        });
        if (!isSet)
            QSKIP("No locale with a decimal comma is installed.");
        const QString text = filled(u"%.1f", 1.5);
        std::setlocale(LC_ALL, "C");
        QCOMPARE(text, u"1.5"_s);
    }

    void describesValues()
    {
        QCOMPARE(describe(3.0), u"3"_s);
        QCOMPARE(describe(0.1), u"0.1"_s);
        QCOMPARE(describe(0.1F), u"0.1"_s);
        QCOMPARE(describe(true), u"1"_s);
        QCOMPARE(describe(QVariant()), u"(null)"_s);
        QCOMPARE(describe(QStringList{u"é \"b"_s}), u"[\"é \\\"b\"]"_s);
        QCOMPARE(describe(QVariantMap{{u"n"_s, 2}}), u"{\"n\":2}"_s);
    }

    void readsAndWritesColours()
    {
        QCOMPARE(colorHexaRgb(u"#FF8001"_s), QColor(255, 128, 1));
        QCOMPARE(colorToHexaRgb(QColor(255, 128, 1, 9)), u"ff8001"_s);
        for (const QString &text : {u""_s, u"ff800"_s, u"0xff80"_s, u"ff8001\n"_s, u"red"_s})
            QVERIFY(!colorHexaRgb(text));
    }

    void sinkMayLogAndSwitchRestores()
    {
        QStringList lines;
        setLogSink([&lines](const QString &line) {
            lines += line;
            logLine(u"from within the sink, to standard error");
        });
        logLine(u"first: %@", u"%d"_s);
        logDebug(u"silent");
        setDebug(true);
        logDebug(u"detail");
        setDebug(false);
        QVERIFY(setLogSink({}));
        QCOMPARE(lines, (QStringList{u"first: %d"_s, u"detail"_s}));
    }

    void linesOfThreadsStayWhole()
    {
        QStringList lines;
        setLogSink([&lines](const QString &line) { lines += line; });
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([i] {
                for (int n = 0; n < 250; ++n)
                    logLine(u"thread %d", i);
            });
        for (std::thread &thread : threads)
            thread.join();
        setLogSink({});
        QCOMPARE(lines.size(), 1000);
        QCOMPARE(lines.count(u"thread 2"_s), 250);
    }

    void decodesEntities_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("plain");
        QTest::newRow("null") << QString() << u" "_s;
        QTest::newRow("empty") << u""_s << u""_s;
        QTest::newRow("markup without entity stays") << u"a <b>  3 </b>"_s << u"a <b>  3 </b>"_s;
        QTest::newRow("entities") << u"caf&eacute; &#233; &lt;x&gt;"_s << u"café é <x>"_s;
        QTest::newRow("entity written twice") << u"&amp;eacute;"_s << u"é"_s;
        QTest::newRow("bare ampersand") << u"Tom & Jerry"_s << u"Tom & Jerry"_s;
        QTest::newRow("line breaks") << u"a &eacute;\n\nb"_s << u"a é\n\nb"_s;
        QTest::newRow("script") << u"a<script>alert(1)</script> &eacute;"_s << u"a é"_s;
    }
    void decodesEntities()
    {
        QFETCH(QString, text);
        QTEST(html2Text(text), "plain");
    }

    void picturesAreLeftOut()
    {
        const auto styled = html2AttributedText(
            u"<img src='/etc/passwd'><b>x</b><img src='file:///b.png'>y<img src='c'>&eacute;"_s);
        QCOMPARE(styled.toPlainText(), u"xyé"_s);
        QVERIFY(!styled.toHtml().contains(u"<img"_s));
        QVERIFY(styled.toHtml().contains(u"font-weight"_s));
    }
};

QTEST_MAIN(FormatAndTextsTest)
#include "test_formatAndTexts.moc"
