#include "classShared/colours.h"
#include "classShared/format.h"
#include "classShared/htmlText.h"
#include "classShared/lineLog.h"
#include "classShared/printable.h"

#include <QTest>

#include <clocale>
#include <cmath>
#include <thread>
#include <vector>

using namespace vignar;
using namespace Qt::StringLiterals;

class FormatAndTextsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const QString &text, const QString &expected) {
            QTest::newRow(name) << text << expected;
        };
        row("value like a format", filled(u"%@|%@", u"50%@ %s%n"_s, u"b"_s), u"50%@ %s%n|b"_s);
        row("missing value", filled(u"%ld of %ld %%", 1), u"1 of %ld %"_s);
        row("lone percent", filled(u"isCase:%", true), u"isCase:%"_s);
        row("unknown placeholders", filled(u"%n%p%*d %d", 1), u"%n%p%*d 1"_s);
        row("width beyond limits", filled(u"%99999d", 1), u"%99999d"_s);
        row("flags", filled(u"[%-5d|%05d|%+d|%x]", 7, 7, 7, 255), u"[7    |00007|+7|ff]"_s);
        row("ties as printf rounds", filled(u"%.1f %.0f", 0.25, 2.5), u"0.2 2"_s);
        row("numbers of the other kind", filled(u"%ld %.2f", 12.9, 3), u"12 3.00"_s);
        row("no number for a whole one", filled(u"%ld", std::nan("")), u"0"_s);
        row("too large for a whole one", filled(u"%ld", 1e300), u"9223372036854775807"_s);
        row("longest number", filled(u"%.99f", -1e308).right(100), u'.' + QString(99, u'0'));
        row("text for a number", filled(u"%ld %ld", u"12"_s, u"N/A"_s), u"12 N/A"_s);
        row("padded text", filled(u"%-4s|%.2s", u"ab"_s, u"abc"_s), u"ab  |ab"_s);
        row("null and empty text", filled(u"'%@' '%@'", QString(), u""_s), u"'(null)' ''"_s);

        row("doubles", filled(u"%@ %@", 3.0, 0.1), u"3 0.1"_s);
        row("others", describe(0.1F) + describe(true) + describe({}), u"0.11(null)"_s);
        row("nested", describe(QVariantMap{{u"n"_s, QStringList{u"é\""_s}}}),
            u"{\"n\":[\"é\\\"\"]}"_s);

        row("colour", colorToHexaRgb(QColor(255, 128, 1, 9)), u"ff8001"_s);

        row("null markup", html2Text({}), u" "_s);
        row("markup without entity stays", html2Text(u"a <b>  3 </b>"_s), u"a <b>  3 </b>"_s);
        row("entities", html2Text(u"caf&eacute; &#233; &lt;x&gt;"_s), u"café é <x>"_s);
        row("entity written twice", html2Text(u"&amp;eacute;"_s), u"é"_s);
        row("bare ampersand", html2Text(u"Tom & Jerry"_s), u"Tom & Jerry"_s);
        row("line breaks", html2Text(u"a &eacute;\n\nb"_s), u"a é\n\nb"_s);
        row("script", html2Text(u"a<script>alert(1)</script> &eacute;"_s), u"a é"_s);
    }
    void texts()
    {
        QFETCH(QString, text);
        QTEST(text, "expected");
    }

    void writesPointInEveryLocale()
    {
        if (!std::setlocale(LC_ALL, "fr_FR.UTF-8") && !std::setlocale(LC_ALL, "de_DE.UTF-8"))
            QSKIP("No locale with a decimal comma is installed.");
        const QString text = filled(u"%.1f", 1.5);
        std::setlocale(LC_ALL, "C");
        QCOMPARE(text, u"1.5"_s);
    }

    void readsOnlyPlainColours()
    {
        QCOMPARE(colorHexaRgb(u"#FF8001"_s), QColor(255, 128, 1));
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

    void namesDoNotSpeakToTheTerminal()
    {
        const QString name =
            u"a\x1b[2Jb\tc\nd\r\u202e\u009b\u2028\U000e0041 été 🎬"_s + QChar(0xdc80);
        QCOMPARE(printable(name), u"a?[2Jb?c?d????? été 🎬\ufffd"_s);
        QCOMPARE(printableLines(name), u"a?[2Jb\tc\nd????? été 🎬\ufffd"_s);
        QCOMPARE(onOneLine(u"a\nb\r"_s), u"a␊b␍"_s);
        QString logged;
        const LogSink previous = setLogSink([&logged](const QString &line) { logged = line; });
        logLine(u"%@", name);
        setLogSink(previous);
        QCOMPARE(logged, printableLines(name));
    }

    void linesOfThreadsStayWhole()
    {
        QStringList lines;
        setLogSink([&lines](const QString &line) { lines += line; });
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([] {
                for (int n = 0; n < 250; ++n)
                    logLine(u"a %@ line", u"whole"_s);
            });
        for (std::thread &thread : threads)
            thread.join();
        setLogSink({});
        QCOMPARE(lines.count(u"a whole line"_s), 1000);
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
