#include "app/appDelegate.h"
#include "settings/alerts.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "support/folderListing.h"
#include "support/makeClip.h"
#include "support/recordingOutlets.h"
#include "tasks/workFolder.h"

#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

constexpr int patience = 60000;

} // namespace

class TestBatchRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void makesASheetOfEachSource();
    void refusesWhatIsNoMovie_data();
    void refusesWhatIsNoMovie();
    void unmadeRowsAreMadeAlone();
    void keepsExistingSheetUnlessReplaced_data();
    void keepsExistingSheetUnlessReplaced();
    void passesWithoutIntraPictureAreRetried();
    void vanishedSourceIsSkipped();
    void stopLeavesNothingBehind();
    void unwritableDestinationFails();
    void pausedBatchWaits();
    void stopDuringAnalysisEmptiesTheQueue();
    void emptyBatchEndsAtOnce();

private:
    QString clip(const QString &name) const { return m_clips.filePath(name); }
    void analyse(appDelegate &application, const QStringList &sources);
    void go(appDelegate &application);

    QTemporaryDir m_clips;
    std::unique_ptr<QTemporaryDir> m_destination;
    std::unique_ptr<RecordingOutlets> m_outlets;
};

void TestBatchRun::initTestCase()
{
    QVERIFY(setUpWorkFolder(u"test"_s));
    const QString picture = u"testsrc2=s=320x180:r=10:d=6"_s;
    QVERIFY(makeClip(clip(u"a/clip.mp4"_s), picture, {u"-g"_s, u"10"_s}));
    QVERIFY(makeClip(clip(u"b/clip.mkv"_s), picture, {u"-g"_s, u"10"_s}));
    // One key frame at the start: no intra picture follows any later instant.
    QVERIFY(makeClip(clip(u"longGroup.mp4"_s), picture,
                     {u"-g"_s, u"1000"_s, u"-sc_threshold"_s, u"0"_s}));
    // Takes a while by plain passes.
    QVERIFY(makeClip(clip(u"long.mp4"_s), u"testsrc2=s=640x360:r=25:d=60"_s,
                     {u"-preset"_s, u"ultrafast"_s, u"-g"_s, u"9999"_s}));
    QVERIFY(makeClip(clip(u"sound.mp4"_s), u"sine=d=2"_s));
    for (const QString &name : {u"text.mp4"_s, u"empty.mp4"_s}) {
        QFile file(clip(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        if (name == u"text.mp4")
            file.write("This is a letter, not a movie.\n");
    }
}

void TestBatchRun::init()
{
    m_destination = std::make_unique<QTemporaryDir>();
    m_outlets = std::make_unique<RecordingOutlets>();
    m_outlets->destination = m_destination->path();
    setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>());
}

void TestBatchRun::cleanup()
{
    setAlertPresenter({});
}

void TestBatchRun::analyse(appDelegate &application, const QStringList &sources)
{
    application.draggedFiles(sources);
    QTRY_COMPARE_WITH_TIMEOUT(m_outlets->analysisEnds, 1, patience);
}

void TestBatchRun::go(appDelegate &application)
{
    QVERIFY(application.iba_batchGoBt());
    QTRY_COMPARE_WITH_TIMEOUT(m_outlets->batchEnds, 1, patience);
}

void TestBatchRun::makesASheetOfEachSource()
{
    appDelegate application(*m_outlets);
    analyse(application, {clip(u"a/clip.mp4"_s), clip(u"b/clip.mkv"_s)});
    BatchList &batch = application.whichArrayController();
    QCOMPARE(batch.count(), 2);
    QVERIFY(m_outlets->isGoEnabled);
    QCOMPARE(read(batch.row(0), RowKeys::img).value_or(QImage()).size(), QSize(160, 90));
    go(application);
    // Same name, two sources: neither sheet replaces the other, and nothing else stays.
    QCOMPARE(filesUnder(m_destination->path()), (QStringList{u"clip-2-index.jpg"_s, u"clip-2.jpg"_s,
                                                             u"clip-index.jpg"_s, u"clip.jpg"_s}));
    for (int index = 0; index < 2; ++index) {
        QCOMPARE(batch.resultat(index), QString(Puces::puceSuccess));
        QCOMPARE(m_outlets->outcomes[index].status, SheetOutcome::Status::made);
        QCOMPARE(m_outlets->outcomes[index].thumbnails, 6);
        QCOMPARE(QImageReader(m_outlets->outcomes[index].sheet).size().width(), 1280);
    }
    QVERIFY(m_outlets->steps.contains(localisedCapitalised(u"th"_s) + u" 6/6"_s));
    QCOMPARE(m_outlets->revealed, m_destination->path());
    QVERIFY(!prefRead(RunKeys::processEncDico).isValid());
    QVERIFY(!prefRead(RunKeys::encCurrentProcessingFile).isValid());
}

void TestBatchRun::refusesWhatIsNoMovie_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("reason");
    QTest::newRow("text") << u"text.mp4"_s << localised(u"V_reason_unreadable"_s);
    QTest::newRow("empty") << u"empty.mp4"_s << localised(u"V_reason_unreadable"_s);
    QTest::newRow("sound only") << u"sound.mp4"_s << localised(u"V_reason_noPicture"_s);
    QTest::newRow("missing") << u"missing.mp4"_s << localised(u"V_reason_missing"_s);
}

void TestBatchRun::refusesWhatIsNoMovie()
{
    QFETCH(QString, name);
    QFETCH(QString, reason);
    appDelegate application(*m_outlets);
    analyse(application, {clip(name), clip(u"a/clip.mp4"_s)});
    QCOMPARE(m_outlets->refused, (QList<QPair<QString, QString>>{{clip(name), reason}}));
    QCOMPARE(application.whichArrayController().count(), 1);
}

void TestBatchRun::unmadeRowsAreMadeAlone()
{
    appDelegate application(*m_outlets);
    analyse(application, {clip(u"a/clip.mp4"_s), clip(u"b/clip.mkv"_s), clip(u"longGroup.mp4"_s)});
    BatchList &batch = application.whichArrayController();
    batch.setResultat(0, Puces::puceFailure);
    batch.setResultat(1, Puces::puceSuccess);
    QVERIFY(application.iba_batchGoBt(RowsToMake::unmade));
    QTRY_COMPARE_WITH_TIMEOUT(m_outlets->batchEnds, 1, patience);
    QCOMPARE(filesUnder(m_destination->path()).filter(u"index"_s),
             (QStringList{u"clip-index.jpg"_s, u"longGroup-index.jpg"_s}));
    QCOMPARE(batch.resultat(0), QString(Puces::puceSuccess));
}

void TestBatchRun::keepsExistingSheetUnlessReplaced_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("isKept");
    QTest::newRow("kept") << 0 << true;
    QTest::newRow("replaced") << 1 << false;
    QTest::newRow("nobody answers") << -1 << true;
}

void TestBatchRun::keepsExistingSheetUnlessReplaced()
{
    QFETCH(int, answer);
    QFETCH(bool, isKept);
    const QByteArray photo = "the user's own photo";
    for (const QString &name : {u"/clip-index.jpg"_s, u"/clip.jpg"_s}) {
        QFile file(m_destination->path() + name);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(photo) > 0);
    }
    appDelegate application(*m_outlets);
    analyse(application, {clip(u"a/clip.mp4"_s)});
    if (answer >= 0)
        prefWrite(RunKeys::replaceFilesCheck, answer);
    go(application);
    QCOMPARE(m_outlets->outcomes.first().status,
             isKept ? SheetOutcome::Status::kept : SheetOutcome::Status::made);
    for (const QString &name : {u"/clip-index.jpg"_s, u"/clip.jpg"_s}) {
        QFile file(m_destination->path() + name);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll() == photo, isKept);
    }
}

void TestBatchRun::passesWithoutIntraPictureAreRetried()
{
    prefWrite(Prefs::prefMultimediaHd, 0);
    appDelegate application(*m_outlets);
    analyse(application, {clip(u"longGroup.mp4"_s)});
    // The poster could be made of an intra picture: the passes ask for them too.
    const Dico source = *read(application.whichArrayController().row(0), RowKeys::dico);
    QVERIFY(!contains(source, Keys::intraFailure));
    go(application);
    QCOMPARE(m_outlets->outcomes.first().thumbnails, 6);
    QCOMPARE(m_outlets->outcomes.first().missing, 0);
}

void TestBatchRun::vanishedSourceIsSkipped()
{
    const QString source = clip(u"gone.mp4"_s);
    QVERIFY(QFile::copy(clip(u"a/clip.mp4"_s), source));
    appDelegate application(*m_outlets);
    analyse(application, {source, clip(u"b/clip.mkv"_s)});
    QVERIFY(QFile::remove(source));
    go(application);
    QCOMPARE(application.whichArrayController().count(), 1);
    QCOMPARE(m_outlets->outcomes.size(), 2);
    QCOMPARE(m_outlets->outcomes[0].reason, localised(u"V_reason_missing"_s));
    QCOMPARE(m_outlets->outcomes[1].status, SheetOutcome::Status::made);
}

void TestBatchRun::stopLeavesNothingBehind()
{
    prefWrite(Prefs::prefPlainPasses, 1);
    appDelegate application(*m_outlets);
    analyse(application, {clip(u"long.mp4"_s), clip(u"b/clip.mkv"_s)});
    QVERIFY(application.iba_batchGoBt());
    QTRY_VERIFY_WITH_TIMEOUT(m_outlets->steps.size() >= 1, patience);
    application.iba_taskStopBt(RunnerKind::main);
    QTRY_COMPARE_WITH_TIMEOUT(m_outlets->batchEnds, 1, patience);
    QVERIFY(filesUnder(m_destination->path()).isEmpty());
    QCOMPARE(m_outlets->outcomes.size(), 1);
    QCOMPARE(m_outlets->outcomes[0].status, SheetOutcome::Status::stopped);
    QCOMPARE(application.whichArrayController().resultat(0), QString(Puces::puceFailure));
    QVERIFY(m_outlets->isGoEnabled);
    QVERIFY(application.isCloseQuit());
}

void TestBatchRun::unwritableDestinationFails()
{
    // A path below a file cannot be a folder, for root neither.
    m_outlets->destination = clip(u"a/clip.mp4"_s) + u"/Vignar"_s;
    appDelegate application(*m_outlets);
    analyse(application, {clip(u"a/clip.mp4"_s)});
    QVERIFY(!application.iba_batchGoBt());
    m_outlets->destination = m_destination->path();
    QVERIFY(application.iba_batchGoBt());
    QVERIFY(m_destination->remove());
    QTRY_COMPARE_WITH_TIMEOUT(m_outlets->batchEnds, 1, patience);
    QCOMPARE(m_outlets->outcomes.first().status, SheetOutcome::Status::failed);
    QVERIFY(m_outlets->outcomes.first().reason.contains(m_outlets->destination));
    QVERIFY(!QFile::exists(m_outlets->destination));
}

void TestBatchRun::pausedBatchWaits()
{
    prefWrite(Prefs::prefPlainPasses, 1);
    appDelegate application(*m_outlets);
    analyse(application, {clip(u"long.mp4"_s)});
    QVERIFY(application.iba_batchGoBt());
    QTRY_VERIFY_WITH_TIMEOUT(m_outlets->steps.size() >= 1, patience);
    application.iba_taskPauseBt(true);
    // An analysis of new sources runs beside the paused batch and does not wake it.
    m_outlets->analysisEnds = 0;
    analyse(application, {clip(u"b/clip.mkv"_s)});
    QVERIFY(application.sheetDriver().isPaused());
    QCOMPARE(m_outlets->batchEnds, 0);
    application.iba_taskPauseBt(false);
    QTRY_COMPARE_WITH_TIMEOUT(m_outlets->batchEnds, 1, patience);
    QCOMPARE(m_outlets->outcomes.size(), 2);
}

void TestBatchRun::stopDuringAnalysisEmptiesTheQueue()
{
    appDelegate application(*m_outlets);
    application.draggedFiles({clip(u"a/clip.mp4"_s), clip(u"b/clip.mkv"_s)});
    application.iba_taskStopBt(RunnerKind::analysis);
    QTRY_COMPARE_WITH_TIMEOUT(m_outlets->analysisEnds, 1, patience);
    QCOMPARE(application.whichArrayController().count(), 0);
    QVERIFY(!prefRead(RunKeys::analysisSrcPathesDico).isValid());
    // The next drop starts afresh.
    m_outlets->analysisEnds = 0;
    analyse(application, {clip(u"a/clip.mp4"_s)});
    QCOMPARE(application.whichArrayController().count(), 1);
}

void TestBatchRun::emptyBatchEndsAtOnce()
{
    appDelegate application(*m_outlets);
    go(application);
    QVERIFY(m_outlets->notices.isEmpty());
    QVERIFY(m_outlets->revealed.isEmpty());
}

QTEST_MAIN(TestBatchRun)
#include "test_batchRun.moc"
