#include "app/appDelegate.h"
#include "app/sheetProduction.h"
#include "settings/alerts.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"
#include "sheet/ownMark.h"
#include "support/folderListing.h"
#include "support/logLines.h"
#include "support/makeClip.h"
#include "support/recordingOutlets.h"
#include "tasks/testPlaces.h"
#include "tasks/workFolder.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QImage>
#include <QScopeGuard>
#include <QSemaphore>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

constexpr int patience = 60000;

QByteArray content(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void overwrite(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

/// Says "Replace" to every question.
class Replacer : public AlertPresenter
{
public:
    AlertAnswer present(const AlertRequest &) override { return {AlertButton::second, false}; }
};

} // namespace

class TestNextRow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup() { setAlertPresenter({}); }

    void sheetsAreThoseOfRowsMadeOneByOne();
    void whatIsFoundOtherwiseIsBegunAfresh_data();
    void whatIsFoundOtherwiseIsBegunAfresh();
    void drawnSheetIsNotWrittenAfterAStop_data();
    void drawnSheetIsNotWrittenAfterAStop();
    void stopWhileComposing_data();
    void stopWhileComposing();
    void lateStopGivesUpTheRowAhead();
    void pauseHoldsWhatRunsAhead();
    void programMayEndAtAnyTime();

private:
    QString clip(const QString &name) const { return m_clips.filePath(name); }
    QString made(const QString &name) const { return m_destination->filePath(name); }
    std::unique_ptr<appDelegate> analysed(const QStringList &sources);
    void go(appDelegate &application);
    /// Goes, and has something done once, while the first sheet is composed and the pictures
    /// of the second are taken.
    void goAndMeanwhile(appDelegate &application, const std::function<void()> &act);

    QTemporaryDir m_clips;
    std::unique_ptr<QTemporaryDir> m_destination;
    std::unique_ptr<RecordingOutlets> m_outlets;
};

void TestNextRow::initTestCase()
{
    QVERIFY(setUpWorkFolder(u"test"_s));
    const QString picture = u"testsrc2=s=320x180:r=10:d=6"_s;
    for (const QString &name : {u"a/clip.mp4"_s, u"b/clip.mkv"_s, u"last.mp4"_s})
        QVERIFY(makeClip(clip(name), picture, {u"-g"_s, u"10"_s}));
}

void TestNextRow::init()
{
    m_destination = std::make_unique<QTemporaryDir>();
    m_outlets = std::make_unique<RecordingOutlets>();
    m_outlets->destination = m_destination->path();
    setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>());
    prefWrite(Prefs::prefMultimediaHd, 0);
}

std::unique_ptr<appDelegate> TestNextRow::analysed(const QStringList &sources)
{
    auto application = std::make_unique<appDelegate>(*m_outlets);
    m_outlets->analysisEnds = 0;
    application->draggedFiles(sources);
    const bool isAnalysed =
        QTest::qWaitFor([this] { return m_outlets->analysisEnds == 1; }, patience);
    return isAnalysed ? std::move(application) : nullptr;
}

void TestNextRow::go(appDelegate &application)
{
    m_outlets->batchEnds = 0;
    QVERIFY(application.iba_batchGoBt());
    QTRY_COMPARE_WITH_TIMEOUT(m_outlets->batchEnds, 1, patience);
}

void TestNextRow::goAndMeanwhile(appDelegate &application, const std::function<void()> &act)
{
    int begun = 0;
    QObject context;
    connect(&application.sheetDriver(), &SheetDriver::aheadBegun, &context, [&begun, &act] {
        if (++begun == 1)
            act();
    });
    go(application);
    QVERIFY(begun > 0);
}

void TestNextRow::sheetsAreThoseOfRowsMadeOneByOne()
{
    const auto application =
        analysed({clip(u"a/clip.mp4"_s), clip(u"b/clip.mkv"_s), clip(u"last.mp4"_s)});
    const QSignalSpy begun(&application->sheetDriver(), &SheetDriver::aheadBegun);
    go(*application);
    QCOMPARE(begun.size(), 2);
    const QTemporaryDir ahead;
    const QStringList names = filesUnder(m_destination->path());
    QCOMPARE(names, (QStringList{u"clip-2-index.jpg"_s, u"clip-index.jpg"_s, u"last-index.jpg"_s}));
    for (const QString &name : names)
        QVERIFY(QFile::rename(made(name), ahead.filePath(name)));
    prefWrite(Prefs::prefPlainPasses, 1);
    go(*application);
    QCOMPARE(begun.size(), 2);
    QCOMPARE(filesUnder(m_destination->path()), names);
    for (const QString &name : names)
        QVERIFY(content(made(name)) == content(ahead.filePath(name)));
}

void TestNextRow::whatIsFoundOtherwiseIsBegunAfresh_data()
{
    QTest::addColumn<std::function<void(BatchList &)>>("act");
    QTest::addColumn<int>("thumbnails");
    using Act = std::function<void(BatchList &)>;
    QTest::newRow("nothing happens") << Act([](BatchList &) {}) << 6;
    QTest::newRow("another layout")
        << Act([](BatchList &batch) { batch.setChoices(1, bigLayout, 1); }) << 2;
    QTest::newRow("other preferences") << Act([](BatchList &) {
        prefWrite(Prefs::prefLimitAuto, 0);
        prefWrite(Prefs::prefLimitMix, 12);
    }) << 12;
    QTest::newRow("plain passes") << Act([](BatchList &) { prefWrite(Prefs::prefPlainPasses, 1); })
                                  << 6;
    QTest::newRow("removed") << Act([](BatchList &batch) {
        batch.select(1);
        batch.encBatchRemove(false);
    }) << -1;
    QTest::newRow("vanished") << Act([](BatchList &batch) { QFile::remove(batch.sourcePath(1)); })
                              << 0;
}

void TestNextRow::whatIsFoundOtherwiseIsBegunAfresh()
{
    QFETCH(std::function<void(BatchList &)>, act);
    QFETCH(int, thumbnails);
    const QString second = clip(u"second.mp4"_s);
    QVERIFY(QFile::exists(second) || QFile::copy(clip(u"a/clip.mp4"_s), second));
    const auto application = analysed({clip(u"b/clip.mkv"_s), second, clip(u"last.mp4"_s)});
    goAndMeanwhile(*application, [&] { act(application->whichArrayController()); });
    QStringList names{u"clip-index.jpg"_s, u"last-index.jpg"_s};
    if (thumbnails > 0)
        names.append(u"second-index.jpg"_s);
    QCOMPARE(filesUnder(m_destination->path()), names);
    if (thumbnails >= 0)
        QCOMPARE(m_outlets->outcomes[1].thumbnails, thumbnails);
    QCOMPARE(m_outlets->outcomes.last().thumbnails, thumbnails == 12 ? 12 : 6);
}

void TestNextRow::drawnSheetIsNotWrittenAfterAStop_data()
{
    QTest::addColumn<SheetFormat>("format");
    QTest::newRow("picture") << SheetFormat::jpeg;
    QTest::newRow("document") << SheetFormat::pdf;
}

void TestNextRow::drawnSheetIsNotWrittenAfterAStop()
{
    QFETCH(SheetFormat, format);
    SheetProduction production{.format = format, .pictureFolder = made(u"pictures"_s)};
    QImage picture(32, 18, QImage::Format_RGB32);
    picture.fill(Qt::red);
    QVERIFY(QDir().mkdir(production.pictureFolder));
    QVERIFY(picture.save(production.pictureFolder + u"/img00.jpg"_s));
    write(production.display, Keys::dstPathStr, made(u"sheet"_s));
    const QString sheet = sheetPath(made(u"sheet"_s), format);
    overwrite(sheet, "the old sheet");
    production.agreed.insert(sheet, *fileIdentity(sheet));
    // Asked before the sheet is drawn, and once it is.
    int asked = 0;
    QVERIFY(produceSheet(production, [&asked] { return ++asked == 2; }).isStopped);
    QCOMPARE(content(sheet), QByteArray("the old sheet"));
    QVERIFY(!produceSheet(production, [] { return false; }).isStopped);
    QVERIFY(content(sheet) != "the old sheet");
}

void TestNextRow::stopWhileComposing_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("isMade");
    QTest::newRow("before it is drawn") << u"rgba average txt"_s << false;
    QTest::newRow("once it is written") << u"sheet               :-)"_s << true;
}

void TestNextRow::stopWhileComposing()
{
    QFETCH(QString, line);
    QFETCH(bool, isMade);
    // Nothing is begun ahead: the thread that composes is held while it logs, and with it
    // everybody else who logs.
    prefWrite(Prefs::prefPlainPasses, 1);
    const auto application = analysed({clip(u"a/clip.mp4"_s), clip(u"last.mp4"_s)});
    setAlertPresenter(std::make_unique<Replacer>());
    const QString name = u"clip-index.jpg"_s;
    overwrite(made(name), "the old sheet");
    QSemaphore reached;
    QSemaphore released;
    LogLines log;
    log.watch = [&](const QString &each) {
        if (each.startsWith(line)) {
            reached.release();
            released.acquire();
        }
    };
    const auto release = qScopeGuard([&released] { released.release(100); });
    QVERIFY(application->iba_batchGoBt());
    QVERIFY(QTest::qWaitFor([&reached] { return reached.tryAcquire(); }, patience));
    application->iba_taskStopBt(RunnerKind::main);
    released.release(100);
    QTRY_COMPARE_WITH_TIMEOUT(m_outlets->batchEnds, 1, patience);
    QCOMPARE(m_outlets->outcomes.size(), 1);
    QCOMPARE(m_outlets->outcomes[0].status,
             isMade ? SheetOutcome::Status::made : SheetOutcome::Status::stopped);
    QCOMPARE(filesUnder(m_destination->path()), QStringList{name});
    QCOMPARE(content(made(name)) == "the old sheet", !isMade);
    QCOMPARE(application->whichArrayController().resultat(1), QString(Puces::puce));
}

void TestNextRow::lateStopGivesUpTheRowAhead()
{
    const auto application = analysed({clip(u"a/clip.mp4"_s), clip(u"last.mp4"_s)});
    const QString name = u"clip-index.jpg"_s;
    goAndMeanwhile(*application, [&] {
        // Without the event loop: the sheet is written, and nobody has heard of it yet.
        const QDeadlineTimer deadline(patience);
        while (!QFile::exists(made(name)) && !deadline.hasExpired())
            QThread::msleep(1);
        application->iba_taskStopBt(RunnerKind::main);
    });
    QCOMPARE(m_outlets->outcomes.size(), 1);
    QCOMPARE(m_outlets->outcomes[0].status, SheetOutcome::Status::made);
    QCOMPARE(filesUnder(m_destination->path()), QStringList{name});
    QVERIFY(filesUnder(workFolder()).filter(u"/img"_s).isEmpty());
}

void TestNextRow::pauseHoldsWhatRunsAhead()
{
    // In ffmpeg's place; notes each of its runs that takes pictures.
    const TestPlaces places;
    const QString runs = places.folder.filePath(u"runs"_s);
    QFile tool(places.file(u"support/ffmpeg"_s,
                           filled(u"#!/bin/sh\ncase \"$*\" in */img[0-9]*) echo >>'%@' ;; esac\n"
                                  "exec '%@' \"$@\"\n",
                                  runs, QStandardPaths::findExecutable(u"ffmpeg"_s))
                               .toLocal8Bit()));
    QVERIFY(tool.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    const auto application = analysed({clip(u"a/clip.mp4"_s), clip(u"last.mp4"_s)});
    const QString sheet = made(u"clip-index.jpg"_s);
    QByteArray ofFirst;
    const auto record = [] { return prefStored(RunKeys::processEncDico).value_or(Dico()); };
    goAndMeanwhile(*application, [&] {
        const QByteArray before = content(runs);
        application->iba_taskPauseBt(true);
        // The sheet that is composed is finished all the same; its row waits.
        QTRY_COMPARE_WITH_TIMEOUT(readStr(record(), Keys::dstPathStr), sheet, patience);
        QCoreApplication::sendPostedEvents();
        QVERIFY(contains(record(), Keys::encQtEnc));
        QVERIFY(m_outlets->outcomes.isEmpty());
        QCOMPARE(content(runs), before);
        ofFirst = before;
        application->iba_taskPauseBt(false);
    });
    QVERIFY(!ofFirst.isEmpty() && content(runs).size() > ofFirst.size());
    QCOMPARE(filesUnder(m_destination->path()),
             (QStringList{u"clip-index.jpg"_s, u"last-index.jpg"_s}));
}

void TestNextRow::programMayEndAtAnyTime()
{
    auto application = analysed({clip(u"a/clip.mp4"_s), clip(u"last.mp4"_s)});
    QSignalSpy begun(&application->sheetDriver(), &SheetDriver::aheadBegun);
    QVERIFY(application->iba_batchGoBt());
    QVERIFY(begun.wait(patience));
    application.reset();
    // The sheet that was being composed is whole or absent.
    const QStringList left = filesUnder(m_destination->path());
    QVERIFY(left.isEmpty() || left == QStringList{u"clip-index.jpg"_s});
}

QTEST_MAIN(TestNextRow)
#include "test_nextRow.moc"
