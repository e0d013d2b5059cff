#include "app/appDelegate.h"
#include "app/sheetDisplay.h"
#include "app/sheetDriver.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"
#include "support/folderListing.h"
#include "support/recordingOutlets.h"
#include "tasks/toolPlaces.h"
#include "tasks/workFolder.h"

#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

/// The preferences that change nothing unless they are set.
class TestSheetOptions : public QObject
{
    Q_OBJECT

    QTemporaryDir m_clips;
    std::unique_ptr<QTemporaryDir> m_destination;

    QString makeClip(const QString &name, const QString &pictures, const QStringList &options) const
    {
        const QString path = m_clips.filePath(name);
        const QStringList input{u"-loglevel"_s, u"error"_s, u"-f"_s, u"lavfi"_s, u"-i"_s, pictures};
        return QProcess::execute(ffmpegPath(), input + options + QStringList(path)) == 0
                   ? path
                   : QString();
    }

    /// What became of a source; answer is that to every question about existing files.
    SheetOutcome made(const QString &source, int format, int answer = -1) const
    {
        RecordingOutlets outlets;
        outlets.destination = m_destination->path();
        outlets.format = format;
        appDelegate application(outlets);
        application.draggedFiles({source});
        if (!QTest::qWaitFor([&outlets] { return outlets.analysisEnds == 1; }, patience))
            return {};
        if (answer >= 0)
            prefWrite(RunKeys::replaceFilesCheck, answer);
        const bool isMade =
            application.iba_batchGoBt() &&
            QTest::qWaitFor([&outlets] { return outlets.batchEnds == 1; }, patience);
        return isMade ? outlets.outcomes.value(0) : SheetOutcome();
    }

    /// The times on the sheet of a source, in their order.
    QStringList shownTimes(const QString &source)
    {
        m_destination = std::make_unique<QTemporaryDir>();
        QProcess reader;
        reader.start(u"pdftotext"_s, {u"-layout"_s, made(source, 0).sheet, u"-"_s});
        reader.waitForFinished();
        QStringList times;
        static const QRegularExpression time(u"\\d:\\d\\d:\\d\\d\\.\\d\\d"_s);
        for (auto found = time.globalMatch(QString::fromUtf8(reader.readAll())); found.hasNext();)
            times += found.next().captured();
        return times;
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(setUpWorkFolder(u"test"_s)); }
    void init()
    {
        setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>());
        prefWrite(Prefs::prefMultimediaHd, 0);
    }

    void commentIsTypedOrTheSources()
    {
        const Dico planned{{Keys::comment, u"own"_s}};
        const auto shown = [&planned] { return readStr(sheetDisplay(planned, 0), Keys::comment); };
        prefWrite(Prefs::pageCommentText, u""_s);
        QVERIFY(shown().isNull());
        prefWrite(Prefs::pageComment, 1);
        QCOMPARE(shown(), u"own"_s);
        prefWrite(Prefs::pageCommentText, u" two\nlines "_s);
        QCOMPARE(shown(), u"two lines"_s);
    }

    void everyItemHasItsOwnSwitch()
    {
        const std::pair<const char *, Key<int>> switches[] = {
            {"name", Prefs::pageName},           {"location", Prefs::pageLocation},
            {"date", Prefs::pageDate},           {"duration", Prefs::pageDuration},
            {"vIdentity", Prefs::pageVIdentity}, {"poids", Prefs::pagePoids},
            {"essence", Prefs::pageEssence},     {"comment", Prefs::pageComment},
            {"timecode", Prefs::prefTimecode},   {"bannerDisplayNo", Prefs::bannerDisplayNo},
        };
        prefWrite(Prefs::prefBorderColor, u"123456"_s);
        prefWrite(Prefs::pageBkgColor, u"abcdef"_s);
        prefWrite(Prefs::prefBorderSize, 7.5);
        Dico planned{{Keys::wTh, 640}};
        for (const auto &[item, preference] : switches) {
            if (preference.text != Prefs::bannerDisplayNo.text)
                planned.insert(QString::fromLatin1(item), u"text"_s);
            prefWrite(preference, 0);
        }
        const Dico bare{{Keys::wTh, 640},
                        {Keys::bigMedMinMix, minLayout},
                        {Keys::borderColor, u"123456"_s},
                        {Keys::borderSize, 7.5},
                        {Keys::bkgColor, u"abcdef"_s}};
        QCOMPARE(sheetDisplay(planned, minLayout), bare);
        for (const auto &[item, preference] : switches) {
            prefWrite(preference, 1);
            QStringList added = sheetDisplay(planned, minLayout).keys();
            for (const QString &key : bare.keys())
                added.removeAll(key);
            QCOMPARE(added, QStringList(QString::fromLatin1(item)));
            prefWrite(preference, 0);
        }
    }

    void planningFollowsThePreferences()
    {
        const SourceDico source{{Keys::w_duration, 100}};
        const auto planned = [&source](int layout = bigLayout) {
            SourceDico input = SheetDriver::planningInput(source, layout);
            input.remove(Keys::w_duration);
            return input;
        };
        prefWrite(Prefs::prefLimitBig, 6);
        prefWrite(Prefs::prefLimitMed, 9);
        prefWrite(Prefs::prefLimitMin, 24);
        prefWrite(Prefs::prefLimitMix, 12);
        prefWrite(Prefs::prefLimitAuto, 0);
        prefWrite(Prefs::prefDerush, 0);
        prefWrite(Prefs::prefDerushInterval, 25);
        prefWrite(Prefs::prefTrueTimecode, 0);
        const QList<std::pair<int, int>> counts{{0, 6}, {1, 9}, {2, 24}, {3, 12}, {7, 12}};
        for (const auto &[layout, count] : counts)
            QCOMPARE(planned(layout), (Dico{{Keys::thNumberInt, count}}));
        prefWrite(Prefs::prefLimitAuto, 1);
        QCOMPARE(planned(), (Dico{{Keys::thNumberInt, 6}, {Keys::thNumberAuto, 1}}));
        prefWrite(Prefs::prefLimitAuto, 0);
        prefWrite(Prefs::prefDerush, 1);
        QCOMPARE(planned(),
                 (Dico{{Keys::thNumberInt, 6}, {Keys::thDerush, 1}, {Keys::thDerushInterval, 25}}));
        prefWrite(Prefs::prefDerush, 0);
        prefWrite(Prefs::prefTrueTimecode, 1);
        QCOMPARE(planned(), (Dico{{Keys::thNumberInt, 6}, {Keys::thTrueTimecode, 1}}));
    }

    void blankThumbnailsAreTakenAgain_data() { addWaysToRun(); }
    void blankThumbnailsAreTakenAgain()
    {
        QFETCH(int, isPlain);
        prefWrite(Prefs::prefPlainPasses, isPlain);
        // White from 20 to 30 seconds, which no further instant of the fourth leaves.
        const QString clip = makeClip(
            u"white.mkv"_s,
            u"testsrc2=s=320x180:r=10:d=40,drawbox=color=white:t=fill:enable=between(t\\,20\\,29.9)"_s,
            {u"-g"_s, u"10"_s, u"-y"_s});
        QStringList times{u"0:00:01.66"_s, u"0:00:06.66"_s, u"0:00:13.33"_s,
                          u"0:00:20.00"_s, u"0:00:26.66"_s, u"0:00:33.33"_s};
        QCOMPARE(shownTimes(clip), times);
        prefWrite(Prefs::prefAvoidBlank, 1);
        times[4] = u"0:00:30.00"_s;
        QCOMPARE(shownTimes(clip), times);
        QCOMPARE(filesUnder(m_destination->path()), QStringList{u"white-index.pdf"_s});
    }

    void timesAreThoseOfThePicturesShown_data() { addWaysToRun(); }
    void timesAreThoseOfThePicturesShown()
    {
        QFETCH(int, isPlain);
        prefWrite(Prefs::prefPlainPasses, isPlain);
        prefWrite(Prefs::prefTrueTimecode, 1);
        const QString pictures = u"testsrc2=s=320x180:r=10:d=40"_s;
        // An intra picture every 5 seconds, in a container that starts its clock at 1.4.
        const QString groups =
            makeClip(u"groups.ts"_s, pictures,
                     {u"-g"_s, u"50"_s, u"-sc_threshold"_s, u"0"_s, u"-bf"_s, u"0"_s, u"-y"_s});
        QCOMPARE(shownTimes(groups),
                 (QStringList{u"0:00:05.00"_s, u"0:00:10.00"_s, u"0:00:15.00"_s, u"0:00:20.00"_s,
                              u"0:00:30.00"_s, u"0:00:35.00"_s}));
        // No intra picture but the first: further attempts take the next picture of any type.
        const QString single = makeClip(u"single.mp4"_s, pictures,
                                        {u"-g"_s, u"1000"_s, u"-sc_threshold"_s, u"0"_s, u"-y"_s});
        QCOMPARE(shownTimes(single),
                 (QStringList{u"0:00:01.70"_s, u"0:00:06.70"_s, u"0:00:13.40"_s, u"0:00:20.00"_s,
                              u"0:00:26.70"_s, u"0:00:33.40"_s}));
    }

    void seekPreviewsOfOthersAreKept()
    {
        prefWrite(Prefs::prefWebVtt, 1);
        const QString clip = makeClip(u"web.mkv"_s, u"testsrc2=s=320x180:r=10:d=12"_s, {u"-y"_s});
        m_destination = std::make_unique<QTemporaryDir>();
        QFile mine(m_destination->filePath(u"web-index-sprite.jpg"_s));
        QVERIFY(mine.open(QIODevice::WriteOnly) && mine.write("my photo") == 8);
        mine.close();
        const SheetOutcome kept = made(clip, 1, 0);
        QVERIFY(kept.status == SheetOutcome::Status::made && !kept.notes.isEmpty());
        QVERIFY(mine.size() == 8 && !QFile::exists(kept.vtt));
        // An answer for all does not cover it.
        QVERIFY(!made(clip, 1, 1).notes.isEmpty());
        QVERIFY(mine.size() == 8 && !QFile::exists(kept.vtt));
        QVERIFY(mine.remove());
        const SheetOutcome replaced = made(clip, 1, 1);
        QVERIFY(replaced.notes.isEmpty() && QFile::exists(replaced.vtt));
        QCOMPARE(QImage(mine.fileName()).height(), 90);
    }

private:
    static constexpr int patience = 60000;

    static void addWaysToRun()
    {
        QTest::addColumn<int>("isPlain");
        QTest::newRow("quick passes") << 0;
        QTest::newRow("plain passes") << 1;
    }
};

QTEST_MAIN(TestSheetOptions)
#include "test_sheetOptions.moc"
