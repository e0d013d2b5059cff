#include "capturedLog.h"

#include "settings/preferenceFile.h"
#include "settings/preferences.h"

#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace vignar;
using namespace Qt::StringLiterals;

class PreferencesTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;
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
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath(u"preferences.json"_s);
        setSharedPreferenceStore(nullptr);
    }

    void valuesSurviveARestart_data()
    {
        QTest::addColumn<QVariant>("written");
        QTest::addColumn<QVariant>("expected");
        const auto same = [](const char *name, const QVariant &value) {
            QTest::newRow(name) << value << value;
        };
        same("flag", true);
        same("int", 1280);
        same("large number", 5'000'000'000LL);
        same("real", 0.1);
        same("text", u"Dossier d’été / 50 % \"\\\n"_s);
        same("empty text", u""_s);
        same("nested", Dico{{u"0"_s, Dico{{u"n"_s, 3}, {u"l"_s, QVariantList{1, u"a"_s}}}}});
        QTest::newRow("texts become a list") << QVariant(QStringList{u"-i"_s, u"a b"_s})
                                             << QVariant(QVariantList{u"-i"_s, u"a b"_s});
    }

    void valuesSurviveARestart()
    {
        QFETCH(QVariant, written);
        QFETCH(QVariant, expected);
        FilePreferenceStore store(m_path);
        store.setValue(u"key"_s, written);
        const QVariant atOnce = store.value(u"key"_s);
        const QVariant later = FilePreferenceStore(m_path).value(u"key"_s);
        QCOMPARE(later, expected);
        QCOMPARE(later.typeId(), expected.typeId());
        QCOMPARE(atOnce.typeId(), later.typeId());
        QVERIFY(!QFile::permissions(m_path).testAnyFlags(QFile::ReadGroup | QFile::ReadOther));
    }

    void brokenFilesAreKeptAside_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("cut short") << QByteArray("{\"prefSuffix\": \"ind");
        QTest::newRow("no object") << QByteArray("[1, 2]");
        QTest::newRow("nested without end") << QByteArray(200'000, '[');
        QTest::newRow("too large") << QByteArray(preferenceFileLimit + 1, ' ');
    }

    void brokenFilesAreKeptAside()
    {
        QFETCH(QByteArray, content);
        put("earlier");
        QVERIFY(QFile::rename(m_path, m_path + u".broken"_s));
        put(content);

        QVERIFY(readPreferenceFile(m_path, BrokenFile::leave).isEmpty());
        CapturedLog log;
        FilePreferenceStore store(m_path);
        store.setValue(u"prefSuffix"_s, u"new"_s);
        QCOMPARE(log.lines.size(), 1);
        QFile aside(m_path + u".broken-2"_s);
        QVERIFY(aside.open(QIODevice::ReadOnly));
        QCOMPARE(aside.readAll(), content);
        QCOMPARE(QFileInfo(m_path + u".broken"_s).size(), 7);
        QCOMPARE(FilePreferenceStore(m_path).value(u"prefSuffix"_s), u"new"_s);
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
        QVERIFY(store.hasUnappliedChanges());
        QCOMPARE(log.count(u"kept in memory"_s), 1);
        QVERIFY(!QFileInfo(m_path).isFile());
    }

    void storesOfOneFileKeepEachOthersValues()
    {
        FilePreferenceStore first(m_path);
        FilePreferenceStore second(m_path);
        first.setValue(u"a"_s, 1);
        second.setValue(u"b"_s, 2);
        first.removeValue(u"missing"_s);
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
        QCOMPARE(prefDeleteChildDico0(key, u"missing"_s), 1);
        QCOMPARE(prefDeleteChildDico0(key, u"a"_s), 1);
        QCOMPARE(prefRead(key).toMap().keys(), QStringList{u"b"_s});
        prefWriteDico(key, Dico{{u"c"_s, 2}});
        QCOMPARE(prefRead(key).toMap().keys(), QStringList{u"c"_s});
    }

    void nullsAreRefused()
    {
        QCOMPARE(prefWrite({}, 1), 0);
        QCOMPARE(prefWrite(u"key"_s, QString()), 0);
        QCOMPARE(prefWriteChildDico(u"key"_s, u"child"_s, {}), 0);
        QVERIFY(sharedPreferenceStore().keys().isEmpty());
        QVERIFY(!prefReadStr(u"key"_s).isNull());
    }

    void propertyListsAreRead_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QVariant>("expected");
        QTest::newRow("kinds") << QByteArray("<dict><key>a</key><array><string>é &amp; è</string>"
                                             "<integer>-7</integer><real>1.5</real><true/><false/>"
                                             "<data>\n aGk=\n</data></array></dict>")
                               << QVariant(Dico{{u"a"_s, QVariantList{u"é & è"_s, -7LL, 1.5, true,
                                                                      false, QByteArray("hi")}}});
        QTest::newRow("a numeric date of birth")
            << QByteArray("<dict><key>Birthdate</key><integer>1970</integer></dict>")
            << QVariant(Dico{{u"Birthdate"_s, 1564.0}});
        QTest::newRow("no number")
            << QByteArray("<dict><key>a</key><integer>x</integer></dict>") << QVariant();
        QTest::newRow("nested without end")
            << "<dict><key>a</key>" + QByteArray("<array>").repeated(100'000) << QVariant();
    }

    void propertyListsAreRead()
    {
        QFETCH(QByteArray, body);
        QFETCH(QVariant, expected);
        put("<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\">" + body +
            "</plist>");
        const auto list = readPlist(m_path);
        QCOMPARE(list ? QVariant(*list) : QVariant(), expected);
    }
};

QTEST_GUILESS_MAIN(PreferencesTest)
#include "test_preferences.moc"
