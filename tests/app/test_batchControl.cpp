#include "app/appDelegate.h"
#include "app/destinationChecks.h"
#include "classShared/files.h"
#include "settings/alerts.h"
#include "settings/logFiles.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "support/folderListing.h"
#include "support/logLines.h"
#include "support/makeClip.h"
#include "support/recordingOutlets.h"
#include "tasks/workFolder.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

constexpr int patience = 60000;
constexpr int clipSeconds = 6;

/// Lets folders be chosen, and acts while a row is being made.
class ControlOutlets : public RecordingOutlets
{
public:
    QString chosen;
    QStringList choices;
    std::function<void()> onStep;

    QString chooseFolder(const QString &title, const QString &) override
    {
        choices.append(title);
        return chosen;
    }
    void setStepsText(const QString &text) override
    {
        RecordingOutlets::setStepsText(text);
        if (!text.isEmpty() && onStep)
            onStep();
    }
};

/// Thinks each question over, and says "Replace".
class SlowUser : public AlertPresenter
{
public:
    static constexpr int seconds = 2;

    explicit SlowUser(QStringList &titles) : m_titles(titles) {}
    AlertAnswer present(const AlertRequest &request) override
    {
        m_titles.append(request.title);
        QThread::sleep(seconds);
        return {AlertButton::second, false};
    }

private:
    QStringList &m_titles;
};

/// A log without its byte-order mark; null for one that has none.
QString logText(const QString &path)
{
    QFile file(path);
    const QByteArray mark = "\xEF\xBB\xBF";
    const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    return bytes.startsWith(mark) ? QString::fromUtf8(bytes.mid(mark.size())) : QString();
}

bool overwrite(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

/// The match of the whole text.
QRegularExpressionMatch matched(const QString &text, const QString &pattern)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(text);
}

/// A folder that anybody may write to on a volume without any room; null if there is none.
QString fullFolder()
{
    for (const QString &folder : {u"/dev/mqueue"_s, u"/proc"_s}) {
        if (QFileInfo(folder).isWritable() && freeDiskSpaceMo(folder) == 0)
            return folder;
    }
    return {};
}

} // namespace

/// What goes on around the rows of a batch: Go, stop and pause, notices, folders and logs.
class TestBatchControl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup() { setAlertPresenter({}); }

    void bothLogsTellOfTheRun();
    void fullVolumeFailsTheRow();
    void missingFolderIsAskedFor_data();
    void missingFolderIsAskedFor();
    void endIsNoticed_data();
    void endIsNoticed();
    void pausesAddUp();
    void goWaitsForBatchAndIntake();
    void stopLeavesTheMarkersOfOthers();
    void stepsAreCounted();
    void sourceWithoutIntraPicturesStaysMarked();
    void vanishedRowKeepsItsChoices();
    void iconOpenWaitsForItsTurn();

private:
    QString clip(const QString &name) const { return m_clips.filePath(name); }
    QString at(const QString &name) const { return m_destination->filePath(name); }
    /// A copy that the test may spoil.
    QString copied(const QString &name) const
    {
        const QString copy = m_destination->filePath(u"sources-"_s + name);
        return QFile::copy(clip(u"one.mp4"_s), copy) ? copy : QString();
    }
    QStringList markers() const
    {
        QStringList names;
        for (int row = 0; row < m_application->whichArrayController().count(); ++row)
            names.append(m_application->whichArrayController().resultat(row));
        return names;
    }
    void analyse(const QStringList &sources);
    void go(RowsToMake rows = RowsToMake::all);
    void awaitEnd();

    QTemporaryDir m_clips;
    std::unique_ptr<QTemporaryDir> m_destination;
    std::unique_ptr<ControlOutlets> m_outlets;
    std::unique_ptr<appDelegate> m_application;
};

void TestBatchControl::initTestCase()
{
    QVERIFY(setUpWorkFolder(u"test"_s));
    const QString picture = u"testsrc2=s=160x90:r=5:d=%1"_s;
    for (const QString &name : {u"one.mp4"_s, u"two.mp4"_s, u"three.mp4"_s})
        QVERIFY(makeClip(clip(name), picture.arg(clipSeconds), {u"-g"_s, u"5"_s}));
    // No intra picture comes after the instant of the poster.
    QVERIFY(makeClip(clip(u"single.mp4"_s), picture.arg(12),
                     {u"-g"_s, u"9999"_s, u"-sc_threshold"_s, u"0"_s}));
}

void TestBatchControl::init()
{
    m_application.reset();
    m_destination = std::make_unique<QTemporaryDir>();
    m_outlets = std::make_unique<ControlOutlets>();
    m_outlets->destination = m_destination->path();
    setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>());
    prefWrite(Prefs::prefMultimediaHd, 0);
    prefWrite(Prefs::prefComputerWidthAuto, 0);
    prefWrite(Prefs::prefComputerWidth, 800);
    m_application = std::make_unique<appDelegate>(*m_outlets);
}

void TestBatchControl::analyse(const QStringList &sources)
{
    m_outlets->analysisEnds = 0;
    m_application->draggedFiles(sources);
    QTRY_COMPARE_WITH_TIMEOUT(m_outlets->analysisEnds, 1, patience);
}

void TestBatchControl::go(RowsToMake rows)
{
    QVERIFY(m_application->iba_batchGoBt(rows));
    awaitEnd();
}

void TestBatchControl::awaitEnd()
{
    QTRY_COMPARE_WITH_TIMEOUT(m_outlets->batchEnds, 1, patience);
    m_outlets->batchEnds = 0;
}

void TestBatchControl::bothLogsTellOfTheRun()
{
    const QStringList titles{u"one"_s, u"two"_s, u"three"_s};
    startLogs(StandardStreams::keep);
    analyse({clip(u"one.mp4"_s), clip(u"two.mp4"_s), clip(u"three.mp4"_s)});
    QVERIFY(overwrite(at(u"three-index.jpg"_s), "old"));
    QStringList questions;
    setAlertPresenter(std::make_unique<SlowUser>(questions));
    go();
    setLogSink({});
    QCOMPARE(questions, QStringList{u"three-index.jpg"_s});

    const QString date = u"\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d"_s;
    QString summary = u"start date    : "_s + date;
    QString details = u"drag'n'drop         -> draggedFiles : 3\n"
                      "drag'n'drop, final  = 3\n"_s;
    for (int row = 0; row < 3; ++row) {
        const QString source = clip(titles[row] + u".mp4"_s);
        summary +=
            u"\n----------\n\nsource              : "_s + source + u"\ndestination         : "_s +
            at(titles[row] + u"-index"_s) +
            u"\n   Total speed      : real time / (\\d+\\.\\d\\d)\ndate                : "_s +
            date + u"\n\\(made by vignar\\)"_s;
        const QString next = row < 2 ? clip(titles[row + 1] + u".mp4"_s) : u"none/end"_s;
        details +=
            u"srcsMDico           \\? new current src: '%1' \\(remaining=%2, next: '%3'\\)\n"_s
                .arg(source)
                .arg(2 - row)
                .arg(next);
    }
    details += u"analysis            - end \\(all src\\)\n"_s;
    for (const QString &title : titles) {
        details += u"dpi                 = 800\n"
                   "free necessary space: 2\\.1 vs \\d+ \\(MB\\)\n"
                   "sheet               :-\\) '"_s +
                   at(title + u"-index.jpg"_s) + u"'\n"_s;
    }
    details += u"enc ended           :-\\)\n"_s;

    const auto told = matched(logText(summaryLogPath()), summary);
    QVERIFY2(told.hasMatch(), qPrintable(logText(summaryLogPath())));
    for (int row = 0; row < 3; ++row) {
        // By whole seconds of work, without those in which the user was asked.
        const double speed = told.captured(row + 1).toDouble();
        const double asked = row == 2 ? SlowUser::seconds : 0;
        const double longest = std::max(1.0, m_outlets->outcomes[row].seconds - asked);
        QVERIFY(speed <= clipSeconds && speed > clipSeconds / longest - 0.006);
    }
    static const QRegularExpression driver(
        u"^(drag'n'drop|srcsMDico|analysis            - end|dpi |free |sheet  |enc ended)"_s);
    const QStringList lines = logText(detailedLogPath()).split(u'\n');
    const QString seen = lines.filter(driver).join(u'\n') + u'\n';
    QVERIFY2(matched(seen, details).hasMatch(), qPrintable(seen));
    QCOMPARE(lines.filter(u"th ahead "_s),
             QStringList{u"th ahead            : "_s + clip(u"two.mp4"_s)});
}

void TestBatchControl::fullVolumeFailsTheRow()
{
    QStringList notices;
    setAlertPresenter(std::make_unique<SlowUser>(notices));
    QVERIFY(checkedSpace(m_destination->path()));
    QVERIFY(!checkedSpace(u"/proc"_s));
    QCOMPARE(notices, QStringList{localised(u"D_go_echec_disque1"_s)});
    const QString full = fullFolder();
    if (full.isNull())
        QSKIP("no volume without room can be written to");
    m_outlets->destination = full;
    analyse({clip(u"one.mp4"_s)});
    go();
    QCOMPARE(m_outlets->outcomes.size(), 1);
    QCOMPARE(m_outlets->outcomes[0].status, SheetOutcome::Status::failed);
    QCOMPARE(m_outlets->outcomes[0].reason, filled(localised(u"V_reason_diskFull"_s), full));
    QCOMPARE(notices.size(), 2);
    QCOMPARE(markers(), QStringList{QString(Puces::puceFailure)});
}

void TestBatchControl::missingFolderIsAskedFor_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("chosen");
    QTest::addColumn<int>("questions");
    QTest::addColumn<QString>("fieldAfter");
    QTest::addColumn<QString>("sheetFolder");
    const QString movies = QDir::homePath() + u"/Movies"_s;
    const QString chosen = m_clips.filePath(u"chosen"_s);
    const QString missing = m_clips.filePath(u"not there"_s);
    QVERIFY(QDir().mkpath(chosen));
    QTest::newRow("chosen") << missing << chosen << 1 << chosen << chosen;
    QTest::newRow("declined") << missing << QString() << 1 << missing << QString();
    QTest::newRow("no folder at all")
        << u""_s << chosen << 0 << movies + u'/' << movies + u"/Vignar"_s;
}

void TestBatchControl::missingFolderIsAskedFor()
{
    QFETCH(QString, field);
    QFETCH(QString, sheetFolder);
    QFETCH(QString, chosen);
    m_outlets->destination = field;
    m_outlets->chosen = chosen;
    analyse({clip(u"one.mp4"_s)});
    // The second time the answer is known.
    for (int run = 0; run < 2; ++run) {
        QCOMPARE(m_application->iba_batchGoBt(), !sheetFolder.isNull());
        QTEST(m_outlets->destination, "fieldAfter");
        if (sheetFolder.isNull())
            break;
        awaitEnd();
        QCOMPARE(QFileInfo(m_outlets->outcomes[run].sheet).path(), sheetFolder);
        QCOMPARE(m_outlets->revealed, sheetFolder);
    }
    QTEST(int(m_outlets->choices.size()), "questions");
    for (const QString &title : m_outlets->choices)
        QCOMPARE(title, filled(localised(u"D_go_dossier_destination1"_s), field));
}

void TestBatchControl::endIsNoticed_data()
{
    QTest::addColumn<int>("preference");
    QTest::addColumn<int>("failing");
    QTest::addColumn<bool>("isNoticed");
    QTest::newRow("all made") << 0 << -1 << false;
    QTest::newRow("wanted always") << 1 << -1 << true;
    QTest::newRow("first failed") << 0 << 0 << false;
    QTest::newRow("last failed") << 0 << 1 << true;
}

void TestBatchControl::endIsNoticed()
{
    QFETCH(int, preference);
    QFETCH(int, failing);
    QFETCH(bool, isNoticed);
    prefWrite(Prefs::prefAlertEnd, preference);
    const QStringList sources{clip(u"one.mp4"_s), clip(u"two.mp4"_s)};
    analyse(sources);
    if (failing >= 0)
        // Nothing replaces a folder.
        QVERIFY(QDir().mkdir(at(QFileInfo(sources[failing]).baseName() + u"-index.jpg"_s)));
    go();
    for (int row = 0; row < 2; ++row) {
        QCOMPARE(m_outlets->outcomes[row].status == SheetOutcome::Status::made, row != failing);
        QCOMPARE(markers()[row] == Puces::puceSuccess, row != failing);
    }
    QCOMPARE(m_outlets->notices,
             isNoticed ? QStringList{localised(u"D_fin_GUI"_s)} : QStringList());
    QCOMPARE(m_outlets->revealed, m_destination->path());
}

void TestBatchControl::pausesAddUp()
{
    // p, r: the user pauses and resumes; b, e: an intake begins and ends. Then: is it paused?
    const std::pair<QString, QString> scenes[] = {
        {u"ppr"_s, u"110"_s},         {u"bbe"_s, u"110"_s},   {u"pber"_s, u"1110"_s},
        {u"bper"_s, u"1110"_s},       {u"pbre"_s, u"1110"_s}, {u"bpre"_s, u"1110"_s},
        {u"bebpere"_s, u"1011100"_s},
    };
    analyse({clip(u"one.mp4"_s)});
    SheetDriver &driver = m_application->sheetDriver();
    const auto play = [&](const QString &acts) {
        QString seen;
        for (const QChar act : acts) {
            if (act == u'p' || act == u'r')
                m_application->iba_taskPauseBt(act == u'p');
            else
                driver.taskToSuspendTemporary(act == u'b');
            seen += driver.isPaused() ? u'1' : u'0';
        }
        return seen;
    };
    int played = 0;
    m_outlets->onStep = [&] {
        for (const auto &[acts, isPaused] : scenes)
            QCOMPARE(play(acts), isPaused);
        ++played;
    };
    go();
    QVERIFY(played > 0);
    QCOMPARE(m_outlets->outcomes[0].thumbnails, 6);
}

void TestBatchControl::goWaitsForBatchAndIntake()
{
    go();
    QVERIFY(!m_outlets->isGoEnabled);
    QVERIFY(m_outlets->revealed.isEmpty());
    analyse({clip(u"one.mp4"_s)});
    QVERIFY(m_outlets->isGoEnabled);
    prefWrite(Prefs::prefAlertEnd, 1);

    // An intake ends beside the batch.
    QVERIFY(m_application->iba_batchGoBt());
    QVERIFY(!m_outlets->isGoEnabled);
    QVERIFY(!m_application->iba_batchGoBt());
    m_application->iba_taskPauseBt(true);
    analyse({clip(u"two.mp4"_s)});
    QVERIFY(m_application->sheetDriver().isPaused());
    QVERIFY(!m_outlets->isGoEnabled);

    // The batch is stopped beside an intake.
    m_application->sheetDriver().taskToSuspendTemporary(true);
    m_application->iba_taskStopBt(RunnerKind::main);
    awaitEnd();
    QVERIFY(!m_outlets->isGoEnabled);
    QVERIFY(m_outlets->notices.isEmpty());
    QVERIFY(m_outlets->revealed.isEmpty());
    m_application->sheetDriver().taskToSuspendTemporary(false);
    analyse({clip(u"three.mp4"_s)});
    QVERIFY(m_outlets->isGoEnabled);
    go();
    QVERIFY(m_outlets->isGoEnabled);
    QCOMPARE(m_outlets->outcomes.size(), 4);
}

void TestBatchControl::stopLeavesTheMarkersOfOthers()
{
    analyse({clip(u"one.mp4"_s), clip(u"two.mp4"_s), clip(u"three.mp4"_s)});
    m_outlets->onStep = [this] {
        if (m_outlets->outcomes.size() == 1)
            m_application->iba_taskStopBt(RunnerKind::main);
    };
    go();
    m_outlets->onStep = {};
    using Status = SheetOutcome::Status;
    const auto statuses = [this] {
        QList<Status> all;
        for (const SheetOutcome &outcome : std::as_const(m_outlets->outcomes))
            all.append(outcome.status);
        return all;
    };
    QCOMPARE(statuses(), (QList{Status::made, Status::stopped}));
    const QString success = Puces::puceSuccess;
    QCOMPARE(markers(), (QStringList{success, Puces::puceFailure, Puces::puce}));
    QCOMPARE(filesUnder(m_destination->path()), QStringList{u"one-index.jpg"_s});
    go(RowsToMake::unmade);
    QCOMPARE(statuses(), (QList{Status::made, Status::stopped, Status::made, Status::made}));
    QCOMPARE(m_outlets->outcomes[2].source, clip(u"two.mp4"_s));
    QCOMPARE(markers(), (QStringList{success, success, success}));
}

void TestBatchControl::stepsAreCounted()
{
    prefWrite(Prefs::prefPlainPasses, 1);
    prefWrite(Prefs::prefDerush, 1);
    prefWrite(Prefs::prefDerushInterval, 3);
    analyse({clip(u"one.mp4"_s)});
    go();
    const int pictures = m_outlets->outcomes[0].thumbnails;
    QStringList steps;
    for (int picture = 1; picture <= pictures; ++picture)
        steps += localisedCapitalised(u"th"_s) + u" %1/%2"_s.arg(picture).arg(pictures);
    QVERIFY(pictures > 1);
    QCOMPARE(m_outlets->steps, steps);
    QCOMPARE(m_outlets->outcomes[0].intervalAsked, 3);
}

void TestBatchControl::sourceWithoutIntraPicturesStaysMarked()
{
    prefWrite(Prefs::prefPlainPasses, 1);
    analyse({clip(u"single.mp4"_s)});
    const Dico source = *read(m_application->whichArrayController().row(0), RowKeys::dico);
    QCOMPARE(read(source, Keys::intraFailure), 1);
    const LogLines log;
    go();
    // Each picture by its first pass, which does not look for an intra picture any more.
    QCOMPARE(m_outlets->outcomes[0].missing, 0);
    QCOMPARE(log.count(u"tl start       task : main=1"_s), m_outlets->outcomes[0].thumbnails);
}

void TestBatchControl::vanishedRowKeepsItsChoices()
{
    m_outlets->layout = bigLayout;
    m_outlets->format = 0;
    const QString gone = copied(u"gone.mp4"_s);
    analyse({gone});
    m_outlets->layout = minLayout;
    m_outlets->format = 1;
    QVERIFY(QFile::remove(gone));
    go();
    QCOMPARE(m_outlets->outcomes.size(), 1);
    QCOMPARE(m_outlets->outcomes[0].source, gone);
    QCOMPARE(m_outlets->outcomes[0].status, SheetOutcome::Status::failed);
    QCOMPARE(m_outlets->outcomes[0].layout, bigLayout);
    QCOMPARE(m_outlets->outcomes[0].format, SheetFormat::pdf);
    QCOMPARE(markers(), QStringList());
}

void TestBatchControl::iconOpenWaitsForItsTurn()
{
    m_application->applicationOpenFiles({clip(u"one.mp4"_s)});
    QVERIFY(m_outlets->dropImage.isNull());
    QTRY_COMPARE_WITH_TIMEOUT(m_outlets->analysisEnds, 1, patience);
    QCOMPARE(markers(), QStringList{QString(Puces::puce)});
}

QTEST_MAIN(TestBatchControl)
#include "test_batchControl.moc"
