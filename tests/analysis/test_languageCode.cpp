#include "analysis/languageCode.h"

#include <QSet>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

class LanguageCodeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void looksUpBothWays_data()
    {
        QTest::addColumn<bool>("toCode");
        QTest::addColumn<QVariant>("answer");
        const auto nameOf = [](const char *code, const QString &answer) {
            QTest::newRow(code) << false << QVariant(answer);
        };
        const auto codeOf = [](const char *name, const QVariant &answer) {
            QTest::newRow(name) << true << answer;
        };
        nameOf("FRA", u"French"_s);
        nameOf("fre", u"French "_s);
        nameOf("spa", u"Spanish"_s);
        nameOf("QAB", u"-"_s);
        nameOf("qtz", u"-"_s);
        nameOf("qua", u"!"_s);
        nameOf("und", u"?"_s);
        nameOf("mul", u"?"_s);
        nameOf("xyz", u"!"_s);
        nameOf("", u"!"_s);
        codeOf("French", u"fra"_s);
        codeOf("French ", u"fre"_s);
        codeOf("french", {});
        codeOf("Viêt Namese", u"vie"_s);
        codeOf("Bihari", u"--"_s);
        codeOf("-", u"und"_s);
        codeOf("totoCestLePlusBeau", u"eng"_s);
        codeOf("Klingonese", {});
    }
    void looksUpBothWays()
    {
        QFETCH(bool, toCode);
        QTEST(languageCode(toCode, QString::fromUtf8(QTest::currentDataTag())), "answer");
    }

    void leadsFromEveryNameBackToIt()
    {
        const Dico table = languageCode(true, QString()).toMap();
        QVERIFY(table.size() > 400);
        QSet<QString> codes;
        for (auto entry = table.cbegin(); entry != table.cend(); ++entry) {
            const QString code = entry->toString();
            codes.insert(code);
            QCOMPARE(code.size(), entry.key() == u"Bihari" ? 2 : 3);
            QCOMPARE(languageCode(false, code.toUpper()), QVariant(entry.key()));
            // The second code of a language is nothing but that.
            QVERIFY(!entry.key().endsWith(u' ') || table.contains(entry.key().chopped(1)));
        }
        QCOMPARE(codes.size(), table.size());
        QCOMPARE(languageCode(false, languageTestWord), QVariant(u"English"_s));
    }
};

QTEST_GUILESS_MAIN(LanguageCodeTest)
#include "test_languageCode.moc"
