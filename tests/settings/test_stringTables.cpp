#include "settings/alerts.h"
#include "settings/applicationPlaces.h"
#include "settings/stringTables.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QStringEncoder>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

/// Resources in a folder of the test's own.
class OwnResources : public ApplicationPlaces
{
public:
    explicit OwnResources(const QString &folder) : m_folder(folder) {}
    QString resourceFolder() const override { return m_folder; }
    QString supportFolder() const override { return m_folder; }
    QString preferenceFolder() const override { return m_folder; }
    QString logFolder() const override { return m_folder; }
    QString temporaryFolder() const override { return m_folder; }

private:
    QString m_folder;
};

QHash<QString, QString> shipped(const QString &language, const QString &table)
{
    return parseStrings(readStringsFile(
        QStringLiteral(VIGNAR_RESOURCES "/%1.lproj/%2.strings").arg(language, table)));
}

QSet<QString> keysOf(const QHash<QString, QString> &table)
{
    return {table.keyBegin(), table.keyEnd()};
}

QString filledText(const QString &key, const QString &first, const QString &second,
                   const QString &third)
{
    return utilsAlert::LocalisationString(key, {}, first, second, third, {}, {});
}

} // namespace

class StringTablesTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;

    void put(const QString &name, const QByteArray &content) const
    {
        const QString path = m_folder->filePath(name);
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        setApplicationPlaces(std::make_unique<OwnResources>(m_folder->path()));
        setInterfaceLanguage(u"fr"_s);
    }

    void languagesHoldTheSameKeys_data()
    {
        QTest::addColumn<QString>("table");
        QTest::newRow("main") << QString(localizedTable);
        QTest::newRow("field orders") << QString(fieldsTable);
    }

    void languagesHoldTheSameKeys()
    {
        QFETCH(QString, table);
        const auto english = shipped(u"en"_s, table);
        const auto french = shipped(u"fr"_s, table);
        QVERIFY(!english.isEmpty());
        QCOMPARE(keysOf(french), keysOf(english));
        if (table == fieldsTable) {
            QCOMPARE(keysOf(french).size(), 5);
            QCOMPARE(french.values().removeDuplicates(), 0);
            QCOMPARE(english.values().removeDuplicates(), 0);
        }
        for (const QString &key : english.keys()) {
            const auto places = french.value(key).count(u"%@"_s);
            QVERIFY2(!french.value(key).isEmpty(), qPrintable(key));
            QVERIFY2(places == english.value(key).count(u'%'), qPrintable(key));
        }
    }

    void everyKeyThatTheProgramUsesHasAText()
    {
        static const QRegularExpression use(
            u"\\b(?:(?:localised|localisedCapitalised|LocalisationString|label)\\(\\s*u\"|u\"(?=[DV]_))(\\w+)\""_s);
        const auto known =
            keysOf(shipped(u"en"_s, localizedTable)) + keysOf(shipped(u"en"_s, fieldsTable));
        QSet<QString> used;
        QDirIterator files(QStringLiteral(VIGNAR_SOURCES), {u"*.cpp"_s, u"*.h"_s}, QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            for (auto found = use.globalMatch(readStringsFile(files.next())); found.hasNext();)
                used.insert(found.next().captured(1));
        }
        QVERIFY(used.contains(u"D_Langue"_s));
        QCOMPARE(used - known, QSet<QString>());
    }

    void stringsAreParsed_data()
    {
        QTest::addColumn<QString>("content");
        QTest::addColumn<QString>("text");
        QTest::newRow("plain") << u"\"key\" = \"text\";"_s << u"text"_s;
        QTest::newRow("escapes") << u"\"key\" = \"a \\\"b\\\"\\n\\tc\\\\\";"_s
                                 << u"a \"b\"\n\tc\\"_s;
        QTest::newRow("address") << u"\"key\" = \"http://a /* b */\";"_s << u"http://a /* b */"_s;
        QTest::newRow("after a comment") << u"/* = */ \"key\" = \"text\";"_s << u"text"_s;
        QTest::newRow("commented line") << u"// \"key\" = \"text\";"_s << QString();
        QTest::newRow("commented block") << u"/*\n\"key\" = \"text\";\n*/"_s << QString();
        QTest::newRow("after a broken line") << u"\"broken = \n\"key\" = \"text\";"_s << u"text"_s;
        QTest::newRow("Windows lines")
            << u"\"a\" = \"b\";\r\n\"key\" = \"text\";\r\n"_s << u"text"_s;
    }

    void stringsAreParsed()
    {
        QFETCH(QString, content);
        QFETCH(QString, text);
        QCOMPARE(parseStrings(content).value(u"key"_s), text);
    }

    void encodingsAreDetected_data()
    {
        const QString text =
            u"\"key\" = \"élève à la forêt, où le maïs brûlé gêne déjà l'été\";\n"_s;
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("UTF-8") << text << text.toUtf8();
        QTest::newRow("UTF-8 with mark") << text << "\xEF\xBB\xBF" + text.toUtf8();
        QStringEncoder utf16(QStringEncoder::Utf16BE, QStringEncoder::Flag::WriteBom);
        QTest::newRow("UTF-16 with mark") << text << QByteArray(utf16(text));
        QTest::newRow("Latin-1") << text << text.toLatin1();
    }

    void encodingsAreDetected()
    {
        QFETCH(QString, text);
        QFETCH(QByteArray, bytes);
        put(u"table.strings"_s, bytes);
        QCOMPARE(readStringsFile(m_folder->filePath(u"table.strings"_s)), text);
    }

    void lookupsFallBack()
    {
        put(u"fr.lproj/Localized.strings"_s, "\"a\" = \"à\"; \"same\" = \"same\";");
        put(u"en.lproj/Localized.strings"_s, "\"a\" = \"a\"; \"b\" = \"bee\";");
        QCOMPARE(localisedCapitalised(u"a"_s), u"À"_s);
        QCOMPARE(localised(u"b"_s), u"bee"_s);
        QCOMPARE(localised(u"c"_s), u"c"_s);
        QVERIFY(isLocalised(u"a"_s));
        QVERIFY(!isLocalised(u"same"_s));
        QVERIFY(!isLocalised(u"c"_s));
        setInterfaceLanguage(u"en"_s);
        QCOMPARE(localised(u"a"_s), u"a"_s);
    }

    void theUsersLanguagesAreTriedInOrder()
    {
        put(u"de.lproj/Localized.strings"_s, "");
        put(u"fr.lproj/Localized.strings"_s, "");
        setInterfaceLanguage({});
        const QByteArray before = qgetenv("LANGUAGE");
        qputenv("LANG", "fr_CA.UTF-8");
        qputenv("LANGUAGE", "pt_BR:de_AT:fr");
        const QString language = interfaceLanguage();
        qputenv("LANGUAGE", before);
        QCOMPARE(language, u"de"_s);
    }

    void valuesAreFilledIn()
    {
        put(u"fr.lproj/Localized.strings"_s, "\"two\" = \"%@ puis %@\"; \"rate\" = \"100%%\";");
        QCOMPARE(filledText(u"two"_s, u"50%@"_s, u"b"_s, {}), u"50%@ puis b"_s);
        QCOMPARE(filledText(u"two"_s, u"a"_s, {}, u"c"_s), u"a puis %@"_s);
        QCOMPARE(filledText(u"two"_s, {}, u"b"_s, {}), u"%@ puis %@"_s);
        QCOMPARE(filledText(u"rate"_s, {}, {}, {}), u"100%%"_s);
        QCOMPARE(filledText(u"missing"_s, u"a"_s, {}, {}), u""_s);
    }

    void textsLeadBackToTheirKeys()
    {
        put(u"fr.lproj/fields.strings"_s,
            "no entry\n\"PFF\" = \"progressif\";\nraw \"TFF\" = haute\n\"BFF\" = \"=\";\nx=y\n");
        QCOMPARE(str2LocalisationTitle(u"progressif"_s, fieldsTable), u"PFF"_s);
        QCOMPARE(str2LocalisationTitle(u"progressif"_s,
                                       m_folder->filePath(u"fr.lproj/fields.strings"_s)),
                 u"PFF"_s);
        QCOMPARE(str2LocalisationTitle(u" haute"_s, fieldsTable), u"TFF"_s);
        QCOMPARE(str2LocalisationTitle(u"absent"_s, fieldsTable), u"absent"_s);
        QCOMPARE(str2LocalisationTitle(u"text"_s, u"missing"_s), u"text"_s);
        QCOMPARE(str2LocalisationTitle(u"text"_s, {}), u"text"_s);
        QVERIFY(str2LocalisationTitle({}, fieldsTable).isNull());
        QCOMPARE(localisationKeys(fieldsTable), (QStringList{u"PFF"_s, u"TFF"_s, u"BFF"_s}));
        QVERIFY(!localisationKeys(u"missing"_s));
    }
};

QTEST_GUILESS_MAIN(StringTablesTest)
#include "test_stringTables.moc"
