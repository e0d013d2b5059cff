#include "capturedLog.h"

#include "settings/preferenceFile.h"
#include "settings/preferencePanel.h"
#include "settings/preferences.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

class FakePanel : public PreferencePanel
{
public:
    void setControl(const QString &key, const QVariant &value) override { controls[key] = value; }
    QVariant control(const QString &key) const override { return controls.value(key); }
    int segmentCount(const QString &) const override { return 4; }
    void perform(Action) override {}

    Dico controls;
};

/// What the panel shows for one stored value.
QVariant shown(const QString &key, const QVariant &stored)
{
    FakePanel panel;
    prefs2GuiApp(panel, Dico{{key, stored}});
    return panel.controls.value(key);
}

} // namespace

class PreferencesTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    QString m_path;

    void put(const QByteArray &content) const
    {
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

private Q_SLOTS:
    void init()
    {
        m_path = m_folder.filePath(QString::fromLatin1(QTest::currentTestFunction()));
        setSharedPreferenceStore(nullptr);
    }

    void valuesSurviveARestart()
    {
        const Dico nested{{u"n"_s, 3}, {u"l"_s, QVariantList{1, u"a"_s}}};
        for (const QVariant &written :
             {QVariant(true), QVariant(1280), QVariant(5'000'000'000LL), QVariant(0.1),
              QVariant(u"d’été / 50 % \"\\\n"_s), QVariant(u""_s), QVariant(nested),
              QVariant(QStringList{u"-i"_s})}) {
            FilePreferenceStore store(m_path);
            store.setValue(u"key"_s, written);
            const QVariant later = FilePreferenceStore(m_path).value(u"key"_s);
            const bool isTexts = written.typeId() == QMetaType::QStringList;
            const QVariant expected = isTexts ? QVariant(written.toList()) : written;
            QCOMPARE(later, expected);
            QCOMPARE(later.typeId(), expected.typeId());
            QCOMPARE(store.value(u"key"_s).typeId(), expected.typeId());
        }
        QVERIFY(!QFile::permissions(m_path).testAnyFlags(QFile::ReadGroup | QFile::ReadOther));
    }

    void brokenFilesAreKeptAside()
    {
        for (const QByteArray &content :
             {QByteArray("{\"prefSuffix\": \"ind"), QByteArray("[1, 2]"), QByteArray(200'000, '['),
              QByteArray(preferenceFileLimit + 1, ' ')}) {
            m_path += u'_';
            put("earlier");
            QVERIFY(QFile::rename(m_path, m_path + u".broken"_s));
            put(content);
            QVERIFY(readPreferenceFile(m_path, BrokenFile::leave).isEmpty());
            CapturedLog log;
            FilePreferenceStore(m_path).setValue(u"prefSuffix"_s, u"new"_s);
            QCOMPARE(log.lines.size(), 1);
            QFile aside(m_path + u".broken-2"_s);
            QVERIFY(aside.open(QIODevice::ReadOnly) && aside.readAll() == content);
            QCOMPARE(QFileInfo(m_path + u".broken"_s).size(), 7);
            QCOMPARE(FilePreferenceStore(m_path).value(u"prefSuffix"_s), u"new"_s);
        }
    }

    void whatCannotBeReadIsNeverReplaced()
    {
        QCOMPARE(mkfifo(QFile::encodeName(m_path).constData(), 0600), 0);
        CapturedLog log;
        FilePreferenceStore store(m_path);
        log.lines.clear();
        store.setValue(u"a"_s, 1);
        store.setValue(u"b"_s, 2);
        QCOMPARE(store.keys(), (QStringList{u"a"_s, u"b"_s}));
        QCOMPARE(log.count(u"kept in memory"_s), 1);
        QVERIFY(store.hasUnappliedChanges() && !QFileInfo(m_path).isFile());
    }

    void storesOfOneFileKeepEachOthersValues()
    {
        FilePreferenceStore first(m_path);
        FilePreferenceStore second(m_path);
        first.setValue(u"a"_s, 1);
        second.setValue(u"b"_s, 2);
        first.setValue(u"a"_s, 3);
        second.removeValue(u"b"_s);
        first.setValue(u"c"_s, 4);
        const FilePreferenceStore third(m_path);
        QCOMPARE(third.keys(), (QStringList{u"a"_s, u"c"_s}));
        QCOMPARE(third.value(u"a"_s), 3);
    }

    void aHeldLockOnlyDelaysWriting()
    {
        FilePreferenceStore store(m_path);
        QLockFile other(m_path + u".lock"_s);
        QVERIFY(other.lock());
        CapturedLog log;
        store.setValue(u"a"_s, 1);
        store.setValue(u"b"_s, 2);
        QCOMPARE(store.value(u"a"_s), 1);
        QCOMPARE(log.count(u"kept in memory"_s), 1);
        other.unlock();
        store.removeValue(u"b"_s);
        QVERIFY(!store.hasUnappliedChanges());
        QCOMPARE(FilePreferenceStore(m_path).keys(), QStringList{u"a"_s});
    }

    void childEntriesChangeOneByOne()
    {
        const QString key = u"processEncDico"_s;
        QCOMPARE(prefWriteChildDico(key, u"a"_s, 1), 1);
        QCOMPARE(prefWriteChildDico(key, u"b"_s, u"100%@"_s), 1);
        QCOMPARE(prefRead(key).toMap(), (Dico{{u"a"_s, 1}, {u"b"_s, u"100%@"_s}}));
        QCOMPARE(prefDeleteChildDico0(key, u"x"_s) + prefDeleteChildDico0(key, u"a"_s), 2);
        QCOMPARE(prefRead(key).toMap(), (Dico{{u"b"_s, u"100%@"_s}}));
    }

    void nullsAreRefused()
    {
        QCOMPARE(prefWrite({}, 1) + prefWrite(u"key"_s, QString()), 0);
        QCOMPARE(prefWriteChildDico(u"key"_s, u"child"_s, {}), 0);
        QVERIFY(sharedPreferenceStore().keys().isEmpty());
    }

    void propertyListsAreRead()
    {
        const auto read = [this](const QByteArray &value) {
            put("<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
                "<key>Birthdate</key>" +
                value + "</dict></plist>");
            return readPlist(m_path).value_or(Dico()).value(u"Birthdate"_s);
        };
        QCOMPARE(read("<array><string>é &amp; è</string><integer>-7</integer><real>1.5</real>"
                      "<true/><false/><data>\n aGk=\n</data></array>"),
                 (QVariantList{u"é & è"_s, -7LL, 1.5, true, false, QByteArray("hi")}));
        QCOMPARE(read("<integer>1970</integer>"), 1564.0); // A numeric date of birth.
        QVERIFY(!read("<integer>x</integer>").isValid());
        QVERIFY(!read(QByteArray("<array>").repeated(100'000)).isValid());
    }

    void thePanelShowsOnlyWhatIsValid()
    {
        QCOMPARE(shown(Prefs::prefColor, 7), 1); // Beyond the last segment.
        QCOMPARE(shown(Prefs::prefColor, {}), 1);
        QCOMPARE(shown(Prefs::prefCheckMatrix, 2147483647), 3); // No segment at all.
        QCOMPARE(shown(Prefs::prefDerushInterval, 0), 20);
        QCOMPARE(shown(Prefs::update, {}), 1);
        QCOMPARE(shown(Prefs::pageBkgColor, u"0A0b0c"_s), u"0a0b0c"_s);
        QCOMPARE(shown(Prefs::prefBorderColor, u"red wine"_s), u"b3b3b3"_s);

        // The folder of the product's own name is made when it is needed.
        const QString home = QDir::homePath();
        for (const QString &path : {home, home + u"/Vignar/"_s})
            QCOMPARE(shown(Prefs::prefDefautDstPathStr, path), path);
        for (const QString &path : {home + u"/gone"_s, home + u"/gone/Vignar"_s})
            QCOMPARE(shown(Prefs::prefDefautDstPathStr, path), home + u"/Movies/"_s);
    }

    void thePanelReadsBackWhatItShows()
    {
        FakePanel panel;
        prefs2GuiApp(panel, prefDefaults());
        Dico expected = prefDefaults();
        for (const auto *key : {"rateDeclined", "ratedVersion", "rateVersion"})
            expected.remove(QString::fromLatin1(key));
        expected[Prefs::prefColor] = 1;
        QCOMPARE(*prefs2GuiApp(panel, std::nullopt), expected);

        // A mixed check box is on, unless it plans thumbnails.
        panel.setControl(Prefs::prefDerushInterval, -5);
        for (const QString &key : {u"prefLimitAuto"_s, u"prefDerush"_s, u"pageName"_s}) {
            panel.setControl(key, -1);
            expected[key] = key == u"pageName"_s ? 1 : 0;
        }
        QCOMPARE(*prefs2GuiApp(panel, std::nullopt), expected);
    }
};

QTEST_GUILESS_MAIN(PreferencesTest)
#include "test_preferences.moc"
