#include "capturedLog.h"

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

#include <thread>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

/// Resources in a folder of the test's own.
struct OwnResources : ApplicationPlaces {
    explicit OwnResources(const QString &path) : folder(path) {}
    QString resourceFolder() const override { return folder; }
    QString supportFolder() const override { return support; }
    QString preferenceFolder() const override { return folder; }
    QString logFolder() const override { return folder; }
    QString temporaryFolder() const override { return folder; }

    const QString folder;
    QString support = folder;
};

AlertRequest shown;
AlertAnswer nextAnswer;

class Recorder : public AlertPresenter
{
public:
    AlertAnswer present(const AlertRequest &request) override
    {
        shown = request;
        return nextAnswer;
    }
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

/// What the pattern captures anywhere in the sources.
QSet<QString> wordsOfSources(const QRegularExpression &pattern)
{
    QSet<QString> words;
    QDirIterator files(QStringLiteral(VIGNAR_SOURCES), {u"*.cpp"_s, u"*.h"_s}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        for (auto found = pattern.globalMatch(readStringsFile(files.next())); found.hasNext();)
            words.insert(found.next().captured(1));
    }
    return words;
}

} // namespace

class TextsAndAlertsTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;

    void put(const QString &name, const QByteArray &content) const
    {
        QFile file(m_folder->filePath(name));
        QVERIFY(QDir().mkpath(QFileInfo(file).path()) && file.open(QIODevice::WriteOnly));
        file.write(content);
    }

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        setApplicationPlaces(std::make_unique<OwnResources>(m_folder->path()));
        setInterfaceLanguage(u"fr"_s);
        setAlertPresenter(std::make_unique<Recorder>());
    }

    void languagesHoldTheSameKeys()
    {
        for (const QString table : {localizedTable, fieldsTable}) {
            const auto english = shipped(u"en"_s, table);
            const auto french = shipped(u"fr"_s, table);
            QVERIFY(!english.isEmpty());
            QCOMPARE(keysOf(french), keysOf(english));
            for (const QString &key : english.keys()) {
                const QString text = french.value(key);
                const bool isAlike = text.count(u"%@"_s) == english.value(key).count(u'%');
                QVERIFY2(!text.isEmpty() && isAlike, qPrintable(key));
            }
        }
        // Field orders lead back to their keys, so that no two may be called the same.
        for (const QString &language : {u"en"_s, u"fr"_s})
            QCOMPARE(shipped(language, fieldsTable).values().removeDuplicates(), 0);
    }

    void everyKeyThatTheProgramUsesHasAText()
    {
        static const QRegularExpression use(
            u"\\b(?:(?:localised|localisedCapitalised|LocalisationString|label)\\(\\s*u\"|u\"(?=[DV]_))(\\w*[^\\W_])\""_s);
        const auto known =
            keysOf(shipped(u"en"_s, localizedTable)) + keysOf(shipped(u"en"_s, fieldsTable));
        const QSet<QString> used = wordsOfSources(use);
        QVERIFY(used.contains(u"D_Langue"_s));
        QCOMPARE(used - known, QSet<QString>());
    }

    void noTextIsLeftOver()
    {
        // A key may be put together: of a preference's name, of a beginning and an end.
        static const QRegularExpression row(u"\\.key = Prefs::(\\w+)\\.text"_s);
        static const QRegularExpression end(u"(_tip|_group|_unit|_placeholder|Tip)$"_s);
        static const QRegularExpression beginning(u"\"(V_\\w+_)\"\\) \\+"_s);
        const QSet<QString> beginnings = wordsOfSources(beginning);
        QSet<QString> used = wordsOfSources(QRegularExpression(u"\"(V_\\w+)\""_s));
        for (const QString &key : wordsOfSources(row))
            used.insert(u"V_"_s + key);
        const auto isUsed = [&](const QString &key) {
            return used.contains(key) || used.contains(QString(key).remove(end)) ||
                   beginnings.contains(key.left(key.lastIndexOf(u'_') + 1));
        };
        QStringList unused;
        // Keys with "D_" are kept whether they show or not.
        for (const QString &key : shipped(u"en"_s, localizedTable).keys()) {
            if (key.startsWith(u"V_") && !isUsed(key))
                unused << key;
        }
        QCOMPARE(unused.join(u' '), QString());
    }

    void frenchMarksStayWithTheirWords()
    {
        // With a no-break space between, but for the words that a sign ends.
        static const QRegularExpression loose(
            u"[^\u00a0\u202f](?:[;!?»]|:(?!$))|«[^\u00a0\u202f]"_s);
        const auto french = shipped(u"fr"_s, localizedTable);
        for (auto text = french.cbegin(); text != french.cend(); ++text)
            QVERIFY2(!text->contains(loose), qPrintable(text.key()));
    }

    void stringsAreParsed()
    {
        const auto parsed = [](const QString &text) { return parseStrings(text).value(u"key"_s); };
        QCOMPARE(parsed(u"\"key\" = \"a \\\"b\\\"\\n\\tc\\\\\";"_s), u"a \"b\"\n\tc\\"_s);
        QCOMPARE(parsed(u"\"key\" = \"http://a /* b */\";"_s), u"http://a /* b */"_s);
        QCOMPARE(parsed(u"/* = */ \"key\" = \"text\";"_s), u"text"_s);
        QVERIFY(parsed(u"// \"key\" = \"text\";"_s).isNull());
        QVERIFY(parsed(u"/*\n\"key\" = \"text\";\n*/"_s).isNull());
        QCOMPARE(parsed(u"\"broken = \n\"key\" = \"text\";"_s), u"text"_s);
        QCOMPARE(parsed(u"\"a\" = \"b\";\r\n\"key\" = \"text\";\r\n"_s), u"text"_s);
    }

    void encodingsAreDetected()
    {
        const QString text = u"\"key\" = \"élève à la forêt, où le maïs brûlé gêne l'été\";\n"_s;
        QStringEncoder utf16(QStringEncoder::Utf16BE, QStringEncoder::Flag::WriteBom);
        for (const QByteArray &bytes : {text.toUtf8(), "\xEF\xBB\xBF" + text.toUtf8(),
                                        QByteArray(utf16(text)), text.toLatin1()}) {
            put(u"table.strings"_s, bytes);
            QCOMPARE(readStringsFile(m_folder->filePath(u"table.strings"_s)), text);
        }
    }

    void lookupsFallBack()
    {
        put(u"fr.lproj/Localized.strings"_s, "\"a\" = \"à\"; \"same\" = \"same\";");
        put(u"en.lproj/Localized.strings"_s, "\"a\" = \"a\"; \"b\" = \"bee\";");
        QCOMPARE(localisedCapitalised(u"a"_s), u"À"_s);
        QCOMPARE(localised(u"b"_s) + localised(u"c"_s), u"beec"_s);
        QVERIFY(isLocalised(u"a"_s) && !isLocalised(u"same"_s) && !isLocalised(u"c"_s));
        setInterfaceLanguage(u"en"_s);
        QCOMPARE(localised(u"a"_s), u"a"_s);
    }

    void theUsersOwnTextsGoFirst()
    {
        const QString shippedTable = m_folder->filePath(u"fr.lproj/Localized.strings"_s);
        const QString ownTable = m_folder->filePath(u"own/fr.lproj/Localized.strings"_s);
        const auto keepOwnIn = [this](const QString &support) {
            auto places = std::make_unique<OwnResources>(m_folder->path());
            places->support = support;
            setApplicationPlaces(std::move(places));
        };
        put(u"fr.lproj/Localized.strings"_s,
            "\"D_Langue\" = \"fra\"; \"a\" = \"à\"; \"b\" = \"bé\";");
        put(u"fr.lproj/fields.strings"_s, "\"PFF\" = \"progressif\";");
        keepOwnIn(u"/proc/nowhere"_s);
        QVERIFY(ownLocalizationFile().isNull());
        keepOwnIn(m_folder->filePath(u"own"_s));
        QVERIFY(QFile::setPermissions(shippedTable, QFile::ReadOwner));
        QCOMPARE(ownLocalizationFile(), ownTable);
        QVERIFY(QFileInfo(ownTable).permission(QFile::WriteOwner));
        QCOMPARE(readStringsFile(ownTable), readStringsFile(shippedTable));

        // From then on it is the user's.
        put(u"own/fr.lproj/Localized.strings"_s, "\"D_Langue\" = \"fra\"; \"a\" = \"own\";");
        put(u"own/fr.lproj/fields.strings"_s, "\"PFF\" = \"own\";");
        put(u"own/de.lproj/Localized.strings"_s, "\"a\" = \"eigen\";");
        setInterfaceLanguage(u"fr"_s);
        QCOMPARE(ownLocalizationFile(), ownTable);
        QCOMPARE(localised(u"a"_s) + localised(u"b"_s), u"ownbé"_s);
        QCOMPARE(localised(u"PFF"_s, fieldsTable), u"progressif"_s);
        setInterfaceLanguage({});
        qputenv("LANG", "de_DE.UTF-8");
        qputenv("LANGUAGE", "de:fr");
        QCOMPARE(localised(u"a"_s), u"eigen"_s);
    }

    void theUsersLanguagesAreTriedInOrder()
    {
        put(u"de.lproj/Localized.strings"_s, "");
        put(u"fr.lproj/Localized.strings"_s, "");
        setInterfaceLanguage({});
        qputenv("LANG", "fr_CA.UTF-8");
        qputenv("LANGUAGE", "pt_BR:de_AT:fr");
        QCOMPARE(interfaceLanguage(), u"de"_s);
    }

    void valuesAreFilledIn()
    {
        const auto &text = utilsAlert::LocalisationString;
        put(u"fr.lproj/Localized.strings"_s, "\"two\" = \"%@ puis %@\"; \"rate\" = \"100%%\";");
        QCOMPARE(text(u"two"_s, {}, u"50%@"_s, u"b"_s, {}, {}, {}), u"50%@ puis b"_s);
        QCOMPARE(text(u"two"_s, {}, u"a"_s, {}, u"c"_s, {}, {}), u"a puis %@"_s);
        QCOMPARE(text(u"rate"_s, {}, {}, {}, {}, {}, {}), u"100%%"_s);
        QCOMPARE(text(u"missing"_s, {}, u"a"_s, {}, {}, {}, {}), u""_s);
    }

    void textsLeadBackToTheirKeys()
    {
        put(u"fr.lproj/fields.strings"_s,
            "no entry\n\"PFF\" = \"progressif\";\nraw \"TFF\" = haute\n\"BFF\" = \"=\";\nx=y\n");
        QCOMPARE(str2LocalisationTitle(u"progressif"_s, fieldsTable), u"PFF"_s);
        QCOMPARE(str2LocalisationTitle(u" haute"_s, fieldsTable), u"TFF"_s);
        QCOMPARE(str2LocalisationTitle(u"text"_s, u"missing"_s), u"text"_s);
        QCOMPARE(localisationKeys(fieldsTable), (QStringList{u"PFF"_s, u"TFF"_s, u"BFF"_s}));
    }

    void buttonsEndAtTheFirstEmptyOne()
    {
        alertTimed(u"100%"_s, u"50% %@"_s, u"Keep"_s, u""_s, u"All"_s, AlertStyle::critical, 10);
        QCOMPARE(shown.title + shown.text, u"100%50% %@"_s);
        QCOMPARE(shown.defaultButton + shown.otherButton, u"Keep"_s);
        alertTimed({}, {}, {}, u"Replace"_s, {}, AlertStyle::critical, 10);
        QVERIFY(!shown.text.isNull());
        QCOMPARE(shown.defaultButton + shown.alternateButton, u"OK"_s);
    }

    void theEndOfAnAlertIsAnsweredAndLogged()
    {
        CapturedLog log;
        nextAnswer = {AlertButton::timeout, true};
        for (const int seconds : {60, 0})
            QCOMPARE(alertTimed({}, {}, {}, {}, {}, AlertStyle::warning, seconds),
                     AlertButton::timeout);
        nextAnswer.button = AlertButton::second;
        const AlertAnswer answer =
            alertTimedSuppressible({}, {}, u"Yes"_s, u"No"_s, {}, AlertStyle::warning, 60);
        QVERIFY(shown.isSuppressible && answer.isSuppressed);
        QCOMPARE(log.lines,
                 (QStringList{u"FERMETURE AUTO      : TIMEOUT"_s, u"FERMETURE USER      : CLIC=2"_s,
                              u"bt                  ? button 2 (btDefault=Yes) (btAlt=No)"_s}));
    }

    void noticesOfAnyThreadAreShownOnTheMainOne()
    {
        std::thread([] { notice(u"title"_s, u"text"_s, 30); }).join();
        QVERIFY(shown.seconds != 30);
        QTRY_COMPARE(shown.seconds, 30);
    }
};

QTEST_GUILESS_MAIN(TextsAndAlertsTest)
#include "test_textsAndAlerts.moc"
