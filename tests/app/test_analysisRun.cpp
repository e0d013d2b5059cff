#include "app/appDelegate.h"
#include "classShared/lineLog.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "support/makeClip.h"
#include "support/recordingOutlets.h"
#include "tasks/testPlaces.h"
#include "tasks/workFolder.h"

#include <QFile>
#include <QFileInfo>
#include <QSemaphore>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

constexpr int patience = 60000;

/// Stands in ffmpeg's place: notes what it is run for, waits at a gate where there is one, and
/// answers as ffmpeg does, by asking it the first time and from memory after that.
const char *const gatedTool = R"sh(#!/bin/sh
kind=pass
for argument; do
    [ "$previous" = -i ] && source=${argument##*/}
    case "$argument" in
        yuv4mpegpipe) kind=probe-$source ;;
        */poster-*) kind=poster ;;
        */img[0-9]*) kind=sheet ;;
    esac
    previous=$argument
done
echo "$kind" >>"GATES/log"
[ -p "GATES/$kind" ] && read -r go <"GATES/$kind"
[ "$kind" = sheet ] && exec "FFMPEG" "$@"
for answer in MEMORY/*/; do
    [ -f "$answer/arguments" ] && read -r arguments <"$answer/arguments" || continue
    [ "$arguments" = "$*" ] || continue
    [ -f "$answer/file" ] && cp "$answer/file" "$argument"
    read -r status <"$answer/status"
    [ "$status" = 0 ] && [ ! -s "$answer/out" ] && exec cat "$answer/err" >&2
    cat "$answer/err" >&2
    cat "$answer/out"
    exit "$status"
done
answer=MEMORY/$$
mkdir "$answer"
"FFMPEG" "$@" >"$answer/out" 2>"$answer/err"
status=$?
echo $status >"$answer/status"
[ -f "$argument" ] && cp "$argument" "$answer/file"
cat "$answer/err" >&2
cat "$answer/out"
echo "$*" >"$answer/arguments"
exit $status
)sh";

/// Knows no movie, and takes its time to say so.
class SlowFramework : public MovieFramework
{
public:
    /// Inspections of this source wait for the test.
    QString held;
    QSemaphore begun;
    QSemaphore released;

    Dico inspect(const QString &path) override
    {
        if (path == held) {
            begun.release();
            released.acquire();
        }
        return {};
    }
    double measureFrameRate(const QString &, RateMeasurement) override { return 0; }
    bool writeExtract(const QString &, const QString &) override { return false; }
    bool canDecode(const QString &) override { return false; }
    std::unique_ptr<OpenedMovie> openMovie(const QString &) override { return {}; }
    bool hasMpeg2Playback() const override { return true; }
    bool hasMpeg2Demultiplexer() const override { return true; }
};

/// Remembers rows and refusals in the order in which they come, and each change of the look.
class OrderedOutlets : public RecordingOutlets
{
public:
    QStringList arrivals;
    QStringList dropImages;
    QList<bool> stops;
    QList<bool> goes;

    void sourceRefused(const QString &path, const QString &reason) override
    {
        RecordingOutlets::sourceRefused(path, reason);
        arrivals.append(QFileInfo(path).fileName());
    }
    void setDropArea(const QString &image, const QString &caption) override
    {
        RecordingOutlets::setDropArea(image, caption);
        dropImages.append(image);
    }
    void setStopVisible(RunnerKind kind, bool isVisible) override
    {
        if (kind == RunnerKind::analysis)
            stops.append(isVisible);
    }
    void setGoEnabled(bool isEnabled) override
    {
        RecordingOutlets::setGoEnabled(isEnabled);
        goes.append(isEnabled);
    }
    void forget() { *this = OrderedOutlets(); }
};

/// The log as it comes, from whatever thread.
class LogLines
{
public:
    LogLines()
    {
        setLogSink([this](const QString &line) {
            const std::lock_guard lock(m_mutex);
            m_lines.append(line);
        });
    }
    ~LogLines() { setLogSink({}); }

    int count(const QString &text) const
    {
        const std::lock_guard lock(m_mutex);
        return int(m_lines.filter(text).size());
    }

private:
    QStringList m_lines;
    mutable std::mutex m_mutex;
};

/// What the analysis is doing when a drop comes.
enum class State {
    idle,
    probing,
    reading,
    probingBesideAPoster,
    recordBehindAPoster,
    onlyAPoster,
    stopping,
    stoppingAPoster
};

using Drops = QList<QStringList>;

const QList<std::pair<const char *, State>> states{
    {"idle", State::idle},
    {"a source is probed", State::probing},
    {"its record is read", State::reading},
    {"a source is probed beside a poster", State::probingBesideAPoster},
    {"a record waits behind a poster", State::recordBehindAPoster},
    {"only a poster is left", State::onlyAPoster},
    {"stopping a reader", State::stopping},
    {"stopping a poster", State::stoppingAPoster},
};

const QList<std::pair<const char *, Drops>> kindsOfDrops{
    {"a new source", {{u"new.mp4"_s}}},
    {"the source at hand", {{u"hand.mp4"_s}}},
    {"the one in the making", {{u"making.mp4"_s}}},
    {"one that waits", {{u"waiting.mp4"_s}}},
    {"a row", {{u"row.mp4"_s}}},
    {"nothing to admit", {{u"notes.txt"_s}}},
    {"one that is refused", {{u"letter.mp4"_s}}},
    {"a mixture with repeats",
     {{u"row.mp4"_s, u"new.mp4"_s, u"hand.mp4"_s, u"notes.txt"_s, u"new.mp4"_s, u"letter.mp4"_s,
       u"making.mp4"_s, u"waiting.mp4"_s}}},
    {"a new one, itself and nothing at once",
     {{u"new.mp4"_s}, {u"new.mp4"_s}, {u"notes.txt"_s}, {u"hand.mp4"_s}}},
};

/// The sources that are under analysis in a state and go on to be rows.
QStringList underWay(State state)
{
    const QStringList atHand{u"hand.mp4"_s, u"waiting.mp4"_s};
    switch (state) {
    case State::probing:
    case State::reading:
        return atHand;
    case State::probingBesideAPoster:
    case State::recordBehindAPoster:
        return QStringList{u"making.mp4"_s} + atHand;
    case State::onlyAPoster:
        return {u"making.mp4"_s};
    default:
        return {};
    }
}

/// Those that were probed before the stop gave them up.
QStringList givenUp(State state)
{
    if (state == State::stopping)
        return {u"making.mp4"_s, u"hand.mp4"_s};
    return state == State::stoppingAPoster ? QStringList{u"making.mp4"_s} : QStringList();
}

} // namespace

Q_DECLARE_METATYPE(State)

class TestAnalysisRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void dropsInEachState_data();
    void dropsInEachState();
    void rowsAndRefusalsComeInOrder();
    void dropHoldsTheBatch();
    void endsWhileAPosterIsMade();

private:
    QString clip(const QString &name) const { return m_clips.filePath(name); }
    QStringList clips(QStringList names) const
    {
        for (QString &name : names)
            name = clip(name);
        return names;
    }
    QString gate(const QString &kind) const { return m_places->folder.filePath(kind); }
    void close(const QString &kind) { QCOMPARE(mkfifo(gate(kind).toLocal8Bit(), 0600), 0); }
    void open(const QString &kind);
    QStringList allRuns() const;
    int runs(const QString &kind) const { return int(allRuns().count(kind)); }
    QStringList probes() const;
    void enter(State state);
    void leave(State state);
    void drop(const Drops &drops);
    void checkRecord(int row);
    void checkLook();

    /// Of the clips; the first has the smallest width and the fewest seconds.
    const QStringList m_names{u"row.mp4"_s, u"making.mp4"_s, u"hand.mp4"_s, u"waiting.mp4"_s,
                              u"new.mp4"_s};

    QTemporaryDir m_clips;
    QTemporaryDir m_memory;
    std::unique_ptr<TestPlaces> m_places;
    std::unique_ptr<OrderedOutlets> m_outlets;
    SlowFramework *m_framework = nullptr;
    std::unique_ptr<LogLines> m_log;
    std::unique_ptr<appDelegate> m_application;
};

void TestAnalysisRun::initTestCase()
{
    QVERIFY(setUpWorkFolder(u"test"_s));
    // Each of its own size and duration.
    for (int number = 1; number <= m_names.size(); ++number)
        QVERIFY(makeClip(clip(m_names[number - 1]),
                         u"testsrc2=s=%1x48:r=5:d=%2"_s.arg(48 + 16 * number).arg(number)));
    QFile letter(clip(u"letter.mp4"_s));
    QVERIFY(letter.open(QIODevice::WriteOnly) && letter.write("Dear friend,\n") > 0);
    QFile notes(clip(u"notes.txt"_s));
    QVERIFY(notes.open(QIODevice::WriteOnly));
}

void TestAnalysisRun::init()
{
    m_places = std::make_unique<TestPlaces>();
    QByteArray tool = gatedTool;
    tool.replace("GATES", m_places->folder.path().toLocal8Bit());
    tool.replace("MEMORY", m_memory.path().toLocal8Bit());
    tool.replace("FFMPEG", QStandardPaths::findExecutable(u"ffmpeg"_s).toLocal8Bit());
    QFile file(m_places->file(u"support/ffmpeg"_s, tool));
    QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>());
    m_log = std::make_unique<LogLines>();
    m_outlets = std::make_unique<OrderedOutlets>();
    auto framework = std::make_unique<SlowFramework>();
    m_framework = framework.get();
    m_application = std::make_unique<appDelegate>(*m_outlets, std::move(framework));
    BatchList &batch = m_application->whichArrayController();
    connect(&batch, &BatchList::rowAdded, this, [this, &batch](int index) {
        m_outlets->arrivals.append(QFileInfo(batch.sourcePath(index)).fileName());
    });
}

void TestAnalysisRun::cleanup()
{
    // Whatever a failed test left waiting.
    if (m_framework)
        m_framework->released.release(10);
    m_application.reset();
    m_log.reset();
    m_places.reset();
}

/// Lets the run that waits go on, and those that come later pass.
void TestAnalysisRun::open(const QString &kind)
{
    int pipe = -1;
    QVERIFY(QTest::qWaitFor([&] {
        pipe = ::open(gate(kind).toLocal8Bit(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        return pipe >= 0;
    }));
    QCOMPARE(::write(pipe, "\n", 1), 1);
    ::close(pipe);
    QVERIFY(QFile::remove(gate(kind)));
}

QStringList TestAnalysisRun::allRuns() const
{
    QFile log(gate(u"log"_s));
    return log.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(log.readAll()).split(u'\n')
                                         : QStringList();
}

/// The sources that were probed, in order.
QStringList TestAnalysisRun::probes() const
{
    QStringList sources = allRuns().filter(u"probe-"_s);
    sources.replaceInStrings(u"probe-"_s, QString());
    return sources;
}

/// Drops one after another in the same turn, and waits until it is known what they brought.
void TestAnalysisRun::drop(const Drops &drops)
{
    const auto looked = [this] {
        return m_log->count(u"drag'n'drop, final"_s) + m_log->count(u"no compatible file"_s);
    };
    const int before = looked();
    for (const QStringList &names : drops)
        m_application->draggedFiles(clips(names), FoldersTaken::all);
    QTRY_COMPARE(looked(), before + int(drops.size()));
}

/// With row.mp4 in the list in each state, and hand.mp4, making.mp4 and waiting.mp4 where their
/// names say wherever the state has such a place.
void TestAnalysisRun::enter(State state)
{
    const QString hand = u"hand.mp4"_s, making = u"making.mp4"_s, waiting = u"waiting.mp4"_s;
    const AnalysisDriver &driver = m_application->analysisDriver();
    drop({{u"row.mp4"_s}});
    QTRY_COMPARE_WITH_TIMEOUT(m_outlets->analysisEnds, 1, patience);
    m_outlets->forget();
    const bool isReading = state == State::reading || state == State::stopping;
    const bool hasPoster = state >= State::probingBesideAPoster;
    const bool isProbing = state == State::probing || state == State::probingBesideAPoster;
    if (isReading)
        m_framework->held = clip(hand);
    if (isProbing)
        close(u"probe-"_s + hand);
    if (hasPoster)
        close(u"poster"_s);
    if (state == State::onlyAPoster || state == State::stoppingAPoster)
        drop({{making}});
    else if (hasPoster)
        drop({{making, hand, waiting}});
    else if (state != State::idle)
        drop({{hand, waiting}});
    if (isReading)
        QVERIFY(QTest::qWaitFor([this] { return m_framework->begun.tryAcquire(); }, patience));
    if (isProbing)
        QTRY_COMPARE_WITH_TIMEOUT(runs(u"probe-"_s + hand), 1, patience);
    if (hasPoster)
        QTRY_VERIFY_WITH_TIMEOUT(
            runs(u"poster"_s) > 0 && driver.sourceInTheMaking() == clip(making), patience);
    if (state == State::recordBehindAPoster)
        QTRY_VERIFY_WITH_TIMEOUT(prefStored(RunKeys::analysisSrcCurrentDico) &&
                                     prefStored(RunKeys::analysisFin),
                                 patience);
    if (state == State::onlyAPoster)
        QTRY_VERIFY_WITH_TIMEOUT(driver.sourceAtHand().isNull(), patience);
    if (state >= State::stopping) {
        m_application->iba_taskStopBt(RunnerKind::analysis);
        QVERIFY(QFile::remove(gate(u"poster"_s)));
    }
}

void TestAnalysisRun::leave(State state)
{
    if (state == State::reading || state == State::stopping)
        m_framework->released.release(10);
    if (state == State::probing || state == State::probingBesideAPoster)
        open(u"probe-hand.mp4"_s);
    if (state >= State::probingBesideAPoster && state < State::stopping)
        open(u"poster"_s);
}

void TestAnalysisRun::dropsInEachState_data()
{
    QTest::addColumn<State>("state");
    QTest::addColumn<Drops>("drops");
    for (const auto &[stateName, state] : states) {
        for (const auto &[dropName, drops] : kindsOfDrops)
            QTest::addRow("%s: %s", stateName, dropName) << state << drops;
    }
}

/// New sources become rows or are refused, once and in order; all others are told to be known;
/// what was under way goes on as if nothing had been dropped; and there is one end.
void TestAnalysisRun::dropsInEachState()
{
    QFETCH(State, state);
    QFETCH(Drops, drops);
    QStringList expected = underWay(state);
    int doublons = 0;
    int notices = 0;
    for (const QStringList &names : drops) {
        notices += names == QStringList{u"notes.txt"_s};
        for (const QString &name : names) {
            if (name == u"row.mp4" || expected.contains(name))
                ++doublons;
            else if (name != u"notes.txt")
                expected.append(name);
        }
    }
    enter(state);
    m_outlets->arrivals.clear();
    drop(drops);
    leave(state);
    QTRY_VERIFY_WITH_TIMEOUT(!m_application->isTakingSources(), patience);

    QCOMPARE(m_outlets->arrivals, expected);
    QCOMPARE(m_log->count(u"doublon "_s), doublons);
    QCOMPARE(m_outlets->notices.size(), notices);
    QStringList refusals;
    for (const auto &[path, reason] : std::as_const(m_outlets->refused))
        refusals.append(QFileInfo(path).fileName() + u": "_s + reason);
    const QStringList unreadable(expected.count(u"letter.mp4"_s),
                                 u"letter.mp4: "_s + localised(u"V_reason_unreadable"_s));
    QCOMPARE(refusals.join(u'\n'), unreadable.join(u'\n'));
    const BatchList &batch = m_application->whichArrayController();
    for (int row = 0; row < batch.count(); ++row)
        checkRecord(row);
    QCOMPARE(probes(), QStringList{u"row.mp4"_s} + givenUp(state) + expected);
    checkLook();
    for (const auto &key : {RunKeys::analysisSrcPathStr.text, RunKeys::analysisSrcPathesDico.text,
                            RunKeys::analysisSrcCurrentDico.text, RunKeys::imgPathStr.text,
                            RunKeys::analysisDeb.text, RunKeys::analysisFin.text})
        QVERIFY2(!prefRead(key).isValid(), key.data());
}

/// A row shows the width and the seconds of its own clip.
void TestAnalysisRun::checkRecord(int row)
{
    const BatchList &batch = m_application->whichArrayController();
    const SourceDico record = read(batch.row(row), RowKeys::dico).value_or(Dico());
    const qsizetype number = m_names.indexOf(QFileInfo(batch.sourcePath(row)).fileName()) + 1;
    QCOMPARE(read(record, Keys::v_width, 0), 48 + 16 * int(number));
    QCOMPARE(read(record, Keys::w_duration), double(number));
}

/// Busy from the first drop to the end of the last source, with a way to stop it and without
/// a way to begin a batch.
void TestAnalysisRun::checkLook()
{
    QCOMPARE(m_outlets->analysisEnds, 1);
    QCOMPARE(m_outlets->dropImages.count(u"dndApp"_s), 1);
    QCOMPARE(m_outlets->dropImages.constLast(), u"dndApp"_s);
    QCOMPARE(m_outlets->stops.count(false), 1);
    QVERIFY(!m_outlets->stops.constLast());
    QCOMPARE(m_outlets->goes.count(true), 1);
    QVERIFY(m_outlets->goes.constLast());
}

void TestAnalysisRun::rowsAndRefusalsComeInOrder()
{
    close(u"poster"_s);
    drop({{u"making.mp4"_s, u"letter.mp4"_s, u"new.mp4"_s}});
    QTRY_COMPARE_WITH_TIMEOUT(runs(u"probe-new.mp4"_s), 1, patience);
    QVERIFY(m_outlets->arrivals.isEmpty());
    open(u"poster"_s);
    QTRY_COMPARE_WITH_TIMEOUT(m_outlets->analysisEnds, 1, patience);
    QCOMPARE(m_outlets->arrivals, (QStringList{u"making.mp4"_s, u"letter.mp4"_s, u"new.mp4"_s}));
}

void TestAnalysisRun::dropHoldsTheBatch()
{
    const QTemporaryDir destination;
    prefWrite(Prefs::prefPlainPasses, 1);
    enter(State::idle);
    m_outlets->destination = destination.path();
    close(u"sheet"_s);
    QVERIFY(m_application->iba_batchGoBt());
    QTRY_VERIFY_WITH_TIMEOUT(runs(u"sheet"_s) > 0, patience);
    const SheetDriver &sheets = m_application->sheetDriver();
    QVERIFY(!sheets.isPaused());
    close(u"probe-new.mp4"_s);
    drop({{u"new.mp4"_s}});
    QVERIFY(sheets.isPaused());
    drop({{u"row.mp4"_s}, {u"new.mp4"_s}, {u"notes.txt"_s}});
    QVERIFY(sheets.isPaused());
    open(u"probe-new.mp4"_s);
    QTRY_COMPARE_WITH_TIMEOUT(m_outlets->analysisEnds, 1, patience);
    QVERIFY(!sheets.isPaused());
    QVERIFY(!m_outlets->goes.contains(true));
    open(u"sheet"_s);
    QTRY_COMPARE_WITH_TIMEOUT(m_outlets->batchEnds, 1, patience);
    QCOMPARE(m_outlets->outcomes.size(), 2);
    for (const SheetOutcome &outcome : std::as_const(m_outlets->outcomes))
        QCOMPARE(outcome.status, SheetOutcome::Status::made);
}

void TestAnalysisRun::endsWhileAPosterIsMade()
{
    enter(State::onlyAPoster);
}

QTEST_MAIN(TestAnalysisRun)
#include "test_analysisRun.moc"
