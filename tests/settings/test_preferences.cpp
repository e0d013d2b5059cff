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
#include <QThread>

#include <algorithm>
#include <cmath>

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

/// What a preference is at the doors: texts as typed, stored values as they are kept.
struct Doors {
    QString key;
    QStringList accepted;
    QStringList refused;
    /// Stored values, and what each counts as; invalid: the default.
    QList<std::pair<QVariant, QVariant>> stored;
};

Doors onOff(const Key<int> &key)
{
    return {key,
            {u"0"_s, u"1"_s},
            {u"-1"_s, u"2"_s, u"yes"_s, u""_s},
            {{-1, 1}, {0, 0}, {1, 1}, {2, 1}, {true, 1}, {u"on"_s, {}}}};
}

Doors limit(const Key<int> &key)
{
    return {key,
            {u"1"_s, u"600"_s},
            {u"0"_s, u"601"_s, u"-3"_s, u"1e30"_s, u"nan"_s, u"8.5"_s, u""_s},
            {{0, 1}, {1, 1}, {600, 600}, {601, 600}, {1e30, 600}, {u"12"_s, 12}, {u"x"_s, {}}}};
}

Doors colour(const Key<QString> &key)
{
    return {key,
            {u"000000"_s, u"FFffff"_s},
            {u"red"_s, u"12"_s, u"1234567"_s, u""_s},
            {{u"00ff00"_s, u"00ff00"_s}, {u"red"_s, {}}, {12, {}}}};
}

/// Characters of two bytes each: the limit falls between two of them or into the last.
Doors text(const Key<QString> &key, int longest, bool isCut)
{
    const QString fits = u"é"_s.repeated(longest / 2);
    const QString over = fits + u"é"_s;
    return {key,
            isCut ? QStringList{fits, over} : QStringList{fits, u""_s},
            isCut ? QStringList() : QStringList{over},
            {{fits, fits}, {over, fits}, {QVariantMap(), {}}}};
}

QList<Doors> everyDoor()
{
    const QString most = QString::number(std::max(1, QThread::idealThreadCount()));
    const QString tooMany = QString::number(most.toInt() + 1);
    QList<Doors> doors{
        text(Prefs::prefDefautDstPathStr, 4096, false),
        text(Prefs::prefSuffix, 100, true),
        text(Prefs::prefNameTemplate, 1000, true),
        text(Prefs::pageCommentText, 1000, false),
        text(Prefs::ffFileForceFormatStr, 100, false),
        {Prefs::prefColor, {}, {}, {{-1, -1}, {3, 3}, {4, {}}, {-2, {}}}},
        {Prefs::update, {}, {}, {{0, 0}, {7, 1}}},
        {Prefs::prefCheckMatrix, {u"0"_s, u"3"_s}, {u"-1"_s, u"4"_s}, {{3, 3}, {4, {}}, {-1, {}}}},
        {Prefs::prefDpi, {u"0"_s, u"1"_s}, {u"-1"_s, u"2"_s}, {{0, 0}, {2, {}}}},
        {Prefs::prefSheetFormat,
         {u""_s, u"png"_s, u"webp"_s},
         {u"gif"_s, u"PNG"_s},
         {{u"webp"_s, u"webp"_s}, {u"gif"_s, {}}}},
        {Prefs::prefComputerWidth,
         {u"640"_s, u"7680"_s},
         {u"639"_s, u"7681"_s, u"60000"_s, u"0"_s, u"-3"_s, u"inf"_s},
         {{639, 640},
          {640.0, 640},
          {7680, 7680},
          {7681, 7680},
          {0, 640},
          {-1e30, 640},
          {u"wide"_s, {}},
          {std::nan(""), {}}}},
        {Prefs::prefBorderSize,
         {u"0"_s, u"40"_s, u"2.5"_s},
         {u"-0.1"_s, u"40.1"_s, u"nan"_s, u"inf"_s, u""_s},
         {{-0.1, 0.0}, {0.5, 0.5}, {40.1, 40.0}, {u"nan"_s, {}}, {u"inf"_s, 40.0}}},
        {Prefs::prefDerush, {u"0"_s, u"1"_s}, {u"-1"_s, u"2"_s}, {{-1, 0}, {2, 1}}},
        {Prefs::prefDerushInterval,
         {u"1"_s, u"86400"_s},
         {u"0"_s, u"-4"_s, u"86401"_s},
         {{0, {}}, {-4, {}}, {1, 1}, {86401, 86400}}},
        {Prefs::prefPassProcesses,
         {u"0"_s, most},
         {u"-1"_s, tooMany},
         {{-1, 0}, {100000, most.toInt()}}},
        colour(Prefs::pageBkgColor),
        colour(Prefs::prefBorderColor),
    };
    for (const auto &key :
         {Prefs::prefLimitBig, Prefs::prefLimitMed, Prefs::prefLimitMin, Prefs::prefLimitMix})
        doors += limit(key);
    for (const auto &key :
         {Prefs::prefAlertEnd, Prefs::prefComputerWidthAuto, Prefs::prefLimitAuto,
          Prefs::prefTimecode, Prefs::prefTrueTimecode, Prefs::prefAvoidBlank, Prefs::pageName,
          Prefs::pageLocation, Prefs::pageDate, Prefs::pageDuration, Prefs::pageVIdentity,
          Prefs::pagePoids, Prefs::pageEssence, Prefs::pageComment, Prefs::prefMultimediaHd,
          Prefs::prefDerushNoMultimediaHd, Prefs::prefWebVtt, Prefs::prefPlainPasses,
          Prefs::bannerDisplayNo})
        doors += onOff(key);
    return doors;
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

    void everyPreferenceHasItsRangeAtEveryDoor()
    {
        QStringList keys;
        const QList<Doors> doors = everyDoor();
        for (const Doors &door : doors) {
            keys += door.key;
            const PreferenceRange *range = preferenceRange(door.key);
            QVERIFY2(range, qPrintable(door.key));
            for (const QString &typed : door.accepted)
                QVERIFY2(range->typed(typed), qPrintable(door.key + u'=' + typed));
            for (const QString &typed : door.refused) {
                const Result<QVariant> value = range->typed(typed);
                QVERIFY2(!value, qPrintable(door.key + u'=' + typed));
                QCOMPARE(value.reason(), range->described());
            }
            for (const auto &[stored, counted] : door.stored) {
                const QVariant value = valueInRange(door.key, stored);
                const QByteArray what = (door.key + u'=' + stored.toString()).toUtf8();
                QVERIFY2(value.isValid() == counted.isValid(), what);
                QVERIFY2(value.toString() == counted.toString(), what);
            }
        }
        // The keys of the rating prompt are read by nobody.
        Dico known = prefDefaults();
        for (const QString &key : {u"rateDeclined"_s, u"ratedVersion"_s, u"rateVersion"_s})
            QVERIFY(known.remove(key) == 1 && !preferenceRange(key));
        for (const QString &key : known.keys())
            QVERIFY2(keys.contains(key), qPrintable(key));
        QCOMPARE(preferenceRanges().size(), size_t(keys.size()));
    }

    void storedValuesCountAsTheNearest()
    {
        setSharedPreferenceStore(
            std::make_unique<MemoryPreferenceStore>(Dico{{Prefs::prefComputerWidth, 60000},
                                                         {Prefs::prefDerushInterval, -1},
                                                         {Prefs::pageBkgColor, u"scarlet"_s},
                                                         {Prefs::prefBorderSize, 2},
                                                         {Prefs::prefSuffix, u"s"_s.repeated(300)},
                                                         {RunKeys::replaceFilesCheck, 7}}));
        CapturedLog log;
        for (int reading = 0; reading < 2; ++reading) {
            QCOMPARE(prefValue(Prefs::prefComputerWidth), 7680);
            QCOMPARE(prefValue(Prefs::prefDerushInterval), 20);
            QCOMPARE(prefValue(Prefs::pageBkgColor), u"ffffff"_s);
            QCOMPARE(prefValue(Prefs::prefBorderSize), 2.0);
            QCOMPARE(prefValue(Prefs::prefSuffix), u"s"_s.repeated(100));
            QCOMPARE(prefValue(RunKeys::replaceFilesCheck), 7);
        }
        QCOMPARE(log.count(u"pref not in range"_s), 4);
        QCOMPARE(log.count(u"prefComputerWidth '60000' is not a whole number from 640 to 7680"_s),
                 1);
    }

    void thePanelShowsOnlyWhatIsValid()
    {
        QCOMPARE(shown(Prefs::prefColor, 7), 1); // Beyond the last segment.
        QCOMPARE(shown(Prefs::prefColor, {}), 1);
        QCOMPARE(shown(Prefs::prefCheckMatrix, 2147483647), 3); // No segment at all.
        QCOMPARE(shown(Prefs::prefDerushInterval, 0), 20);
        QCOMPARE(shown(Prefs::prefComputerWidth, 60000), 7680);
        QCOMPARE(shown(Prefs::prefLimitBig, 1000000), u"600"_s);
        QCOMPARE(shown(Prefs::prefBorderSize, -1), 0.0);
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
