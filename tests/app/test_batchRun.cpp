#include "app/appDelegate.h"
#include "settings/alerts.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "sheet/imageExport.h"
#include "sheet/ownMark.h"
#include "support/folderListing.h"
#include "support/makeClip.h"
#include "support/recordingOutlets.h"
#include "tasks/workFolder.h"

#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <utility>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

constexpr int patience = 60000;

/// What stands at a name before a run, or comes to it during one.
enum class Old { nothing, ours, photo, link, danglingLink, folder };

/// Answers as it is told, and keeps the questions.
class ScriptedAlerts : public AlertPresenter
{
public:
    explicit ScriptedAlerts(QList<AlertAnswer> answers, QStringList &questions)
        : m_answers(std::move(answers)), m_questions(questions)
    {
    }
    AlertAnswer present(const AlertRequest &request) override
    {
        m_questions.append(request.text);
        return m_answers.isEmpty() ? AlertAnswer() : m_answers.takeFirst();
    }

private:
    QList<AlertAnswer> m_answers;
    QStringList &m_questions;
};

/// Does something once the pictures of a row are being taken: all has been asked by then,
/// and nothing is written yet.
class MeanwhileOutlets : public RecordingOutlets
{
public:
    std::function<void()> act;

    void setStepsText(const QString &text) override
    {
        RecordingOutlets::setStepsText(text);
        if (!text.isEmpty() && act)
            std::exchange(act, {})();
    }
};

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

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
    void oneAnswerIsForOneRow();
    void answerForAllCoversOnlyWhatIsOurs_data();
    void answerForAllCoversOnlyWhatIsOurs();
    void whatComesMeanwhileIsKept_data();
    void whatComesMeanwhileIsKept();
    void missingSideFilesAreMadeAgain_data();
    void missingSideFilesAreMadeAgain();
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
    QString at(const QString &name) const { return m_destination->filePath(name); }
    bool put(const QString &name, Old old);
    bool isStill(const QString &name, Old old) const;

    QTemporaryDir m_clips;
    std::unique_ptr<QTemporaryDir> m_destination;
    std::unique_ptr<MeanwhileOutlets> m_outlets;
    QByteArray m_ours;
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
    QImage picture16(16, 9, QImage::Format_RGB32);
    picture16.fill(Qt::blue);
    QVERIFY(writePicture(picture16, clip(u"ours.jpg"_s), jpegFormat, 90, signedMetadata));
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
    m_outlets = std::make_unique<MeanwhileOutlets>();
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

bool TestBatchRun::put(const QString &name, Old old)
{
    const QString path = at(name);
    QImage picture(16, 9, QImage::Format_RGB32);
    picture.fill(Qt::red);
    QFile photo(path);
    switch (old) {
    case Old::nothing:
        return true;
    case Old::ours:
        if (!writePicture(picture, path, jpegFormat, 90, signedMetadata))
            return false;
        m_ours = contentOf(path);
        return bearsOurMark(path);
    case Old::photo:
        return picture.save(path, "JPG") && !bearsOurMark(path);
    case Old::link:
        // What it leads to is ours, which changes nothing.
        return QFile::exists(clip(u"ours.jpg"_s)) && QFile::link(clip(u"ours.jpg"_s), path);
    case Old::danglingLink:
        return QFile::link(at(u"nowhere"_s), path);
    case Old::folder:
        return QDir().mkdir(path);
    }
    return false;
}

/// Nothing that was put there has changed, nor what it leads to.
bool TestBatchRun::isStill(const QString &name, Old old) const
{
    const QFileInfo info(at(name));
    switch (old) {
    case Old::nothing:
        return !info.exists();
    case Old::ours:
        return contentOf(at(name)) == m_ours;
    case Old::photo:
        return info.isFile() && QImage(at(name)).width() == 16 && !bearsOurMark(at(name));
    case Old::link:
        return info.isSymLink() && QImage(clip(u"ours.jpg"_s)).width() == 16;
    case Old::danglingLink:
        return info.isSymLink() && !QFile::exists(at(u"nowhere"_s));
    case Old::folder:
        return info.isDir();
    }
    return false;
}

void TestBatchRun::oneAnswerIsForOneRow()
{
    const QStringList names{u"clip-index.jpg"_s, u"clip.jpg"_s, u"longGroup-index.jpg"_s,
                            u"longGroup.jpg"_s};
    for (const QString &name : names)
        QVERIFY(put(name, Old::photo));
    appDelegate application(*m_outlets);
    analyse(application, {clip(u"a/clip.mp4"_s), clip(u"longGroup.mp4"_s)});
    QStringList asked;
    const AlertAnswer replace{AlertButton::second, false};
    setAlertPresenter(std::make_unique<ScriptedAlerts>(QList{replace}, asked));
    go(application);
    // Nobody answers the second question.
    QCOMPARE(asked.size(), 2);
    for (int index = 0; index < names.size(); ++index)
        QVERIFY2(isStill(names[index], Old::photo) == (index >= 2), qPrintable(names[index]));
    QCOMPARE(m_outlets->outcomes[0].status, SheetOutcome::Status::made);
    QCOMPARE(m_outlets->outcomes[1].status, SheetOutcome::Status::kept);
}

void TestBatchRun::answerForAllCoversOnlyWhatIsOurs_data()
{
    QTest::addColumn<Old>("sheet");
    QTest::addColumn<Old>("diskPicture");
    QTest::addColumn<int>("format");
    QTest::addColumn<QString>("made");
    QTest::addColumn<QStringList>("inNotes");
    using enum Old;
    const auto row = [](const char *name, Old sheet, Old diskPicture, int format,
                        const QString &made, const QStringList &inNotes) {
        QTest::newRow(name) << sheet << diskPicture << format << made << inNotes;
    };
    const QString first = u"clip-index"_s;
    const QString second = u"clip-2-index"_s;
    row("photo at the disk picture's name", ours, photo, 1, first, {u"clip.jpg"_s});
    row("photo at the sheet's name", photo, nothing, 1, second, {first, second});
    row("link at the sheet's name", link, link, 1, second, {first, second});
    row("dangling link at a document's name", danglingLink, nothing, 0, second, {first, second});
    row("folder at the sheet's name", folder, nothing, 1, {}, {});
    row("folder at the disk picture's name", nothing, folder, 1, first, {u"clip.jpg"_s});
}

void TestBatchRun::answerForAllCoversOnlyWhatIsOurs()
{
    QFETCH(const Old, sheet);
    QFETCH(const Old, diskPicture);
    QFETCH(const int, format);
    QFETCH(const QString, made);
    QFETCH(const QStringList, inNotes);
    const QString extension = format == 0 ? u".pdf"_s : u".jpg"_s;
    const QString sheetName = u"clip-index"_s + extension;
    QVERIFY(put(sheetName, sheet) && put(u"clip.jpg"_s, diskPicture));
    m_outlets->format = format;
    // The second time what the first has made is replaced: the numbers do not pile up.
    for (int run = 0; run < 2; ++run) {
        m_outlets->outcomes.clear();
        m_outlets->analysisEnds = 0;
        m_outlets->batchEnds = 0;
        appDelegate application(*m_outlets);
        analyse(application, {clip(u"a/clip.mp4"_s)});
        prefWrite(RunKeys::replaceFilesCheck, 1);
        go(application);
        const SheetOutcome &outcome = m_outlets->outcomes.first();
        QCOMPARE(outcome.sheet, made.isEmpty() ? QString() : at(made + extension));
        QCOMPARE(outcome.status,
                 made.isEmpty() ? SheetOutcome::Status::failed : SheetOutcome::Status::made);
        for (const QString &text : inNotes)
            QVERIFY2(outcome.notes.join(u'\n').contains(text), qPrintable(text));
        QCOMPARE(outcome.notes.size(), inNotes.isEmpty() ? 0 : 1);
        QCOMPARE(outcome.isIncomplete, diskPicture == Old::folder);
        QVERIFY(made.isEmpty() || bearsOurMark(outcome.sheet));
        QVERIFY(sheet == Old::ours || sheet == Old::nothing || isStill(sheetName, sheet));
        const bool isTouched = diskPicture == Old::ours || diskPicture == Old::nothing;
        QVERIFY(isTouched || isStill(u"clip.jpg"_s, diskPicture));
    }
}

void TestBatchRun::whatComesMeanwhileIsKept_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<Old>("before");
    QTest::addColumn<Old>("comes");
    QTest::addColumn<int>("format");
    QTest::addColumn<QString>("made");
    const auto row = [](const char *label, const QString &name, Old before, Old comes, int format,
                        const QString &made) {
        QTest::newRow(label) << name << before << comes << format << made;
    };
    using enum Old;
    const QString sheet = u"clip-index.jpg"_s;
    const QString second = u"clip-2-index.jpg"_s;
    row("sheet of another run", sheet, nothing, ours, 1, second);
    row("another sheet in place of the agreed one", sheet, ours, ours, 1, second);
    row("dangling link", sheet, nothing, danglingLink, 1, second);
    row("link at the disk picture's name", u"clip.jpg"_s, ours, link, 1, sheet);
    row("link at the cues' name", u"clip-index.vtt"_s, nothing, link, 1, sheet);
    row("document", u"clip-index.pdf"_s, nothing, link, 0, u"clip-2-index.pdf"_s);
}

void TestBatchRun::whatComesMeanwhileIsKept()
{
    QFETCH(const QString, name);
    QFETCH(const Old, before);
    QFETCH(const Old, comes);
    QFETCH(const int, format);
    QFETCH(const QString, made);
    prefWrite(Prefs::prefWebVtt, 1);
    QVERIFY(put(name, before));
    m_outlets->format = format;
    bool hasCome = false;
    m_outlets->act = [&] {
        QFile::remove(at(name));
        hasCome = put(name, comes);
    };
    appDelegate application(*m_outlets);
    analyse(application, {clip(u"a/clip.mp4"_s)});
    if (before != Old::nothing)
        prefWrite(RunKeys::replaceFilesCheck, 1);
    go(application);
    QVERIFY(hasCome);
    const SheetOutcome &outcome = m_outlets->outcomes.first();
    QVERIFY2(isStill(name, comes), qPrintable(name));
    QCOMPARE(outcome.status, SheetOutcome::Status::made);
    QCOMPARE(outcome.sheet, at(made));
    QVERIFY(bearsOurMark(outcome.sheet));
    QCOMPARE(outcome.notes.size(), 1);
    QVERIFY(outcome.notes.first().contains(at(name)));
}

void TestBatchRun::missingSideFilesAreMadeAgain_data()
{
    QTest::addColumn<Old>("sheet");
    QTest::addColumn<bool>("isMade");
    QTest::newRow("our sheet") << Old::ours << true;
    QTest::newRow("somebody's picture") << Old::photo << false;
}

void TestBatchRun::missingSideFilesAreMadeAgain()
{
    QFETCH(const Old, sheet);
    QFETCH(const bool, isMade);
    prefWrite(Prefs::prefWebVtt, 1);
    QVERIFY(put(u"clip-index.jpg"_s, sheet));
    appDelegate application(*m_outlets);
    analyse(application, {clip(u"a/clip.mp4"_s)});
    go(application);
    const SheetOutcome &outcome = m_outlets->outcomes.first();
    QCOMPARE(outcome.status, SheetOutcome::Status::kept);
    QVERIFY(isStill(u"clip-index.jpg"_s, sheet));
    for (const QString &name : {u"clip.jpg"_s, u"clip-index.vtt"_s, u"clip-index-sprite.jpg"_s})
        QCOMPARE(bearsOurMark(at(name)), isMade);
    QCOMPARE(outcome.notes.size(), isMade ? 2 : 0);
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
