#include "app/passExecutor.h"

#include "app/progressReporter.h"
#include "classShared/lineLog.h"
#include "settings/preferences.h"
#include "sheet/extractionPasses.h"
#include "sheet/jpegReading.h"
#include "sheet/pictureTimes.h"
#include "tasks/runLimits.h"

#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <algorithm>
#include <ranges>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// The times of all pictures of a run are among them: 60 outputs take some 200 kB.
constexpr qint64 lastWordsLimit = 1024 * 1024;

/// For the pictures of a sheet together. One alone has the time to be tried in another way.
std::chrono::milliseconds budgetOf(size_t pictures)
{
    return std::max<std::chrono::milliseconds>(
        2 * SourceBudget::picture, SourceBudget::thumbnail * qint64(std::max<size_t>(1, pictures)));
}

std::chrono::milliseconds timeOf(const FastRun &run)
{
    return std::min<std::chrono::milliseconds>(ProgressReporter::runLimit,
                                               SourceBudget::picture *
                                                   std::max<size_t>(1, run.pictures.size()));
}

/// One picture may be missing for a reason of its own.
constexpr int vanguardSize = 2;

} // namespace

PassExecutor::PassExecutor(QObject *parent)
    : QObject(parent), m_processes(prefValue(Prefs::prefPassProcesses))
{
    const int cores = std::max(1, QThread::idealThreadCount());
    m_processes = m_processes < 1 ? cores : std::min(m_processes, cores);
    m_budget.setSingleShot(true);
    m_budget.callOnTimeout(this, [this] {
        logLine(u"th budget           :-( given up: %@", readStr(m_source, Keys::srcPathStr));
        m_isLate = true;
        terminate();
    });
    connect(&m_folderWatcher, &QFileSystemWatcher::directoryChanged, this,
            &PassExecutor::countLanded);
}

PassExecutor::~PassExecutor()
{
    for (const Running &each : m_running)
        each.launcher->setDelegate(nullptr);
}

QString PassExecutor::picturePath(int picture) const
{
    return m_passes.at(picture).constLast();
}

void PassExecutor::start(const PassMap &passes, const SourceDico &source, Effort effort)
{
    if (m_isRunning)
        return;
    m_isRunning = true;
    m_isSuspended = false;
    m_passes = passes;
    m_source = source;
    m_effort = effort;
    m_areStretchesTried = false;
    m_exhausted = 0;
    m_leftOut.clear();
    m_missing.clear();
    m_landed.clear();
    m_retried.clear();
    m_fault = RunFault::none;
    m_isLate = false;
    m_budget.start(m_ownBudget.value_or(budgetOf(passes.size())));
    if (!passes.empty())
        m_folderWatcher.addPath(QFileInfo(passes.cbegin()->second.constLast()).path());
    m_planning.start(
        this,
        [passes, source, processes = m_processes] { return intraPlan(passes, source, processes); },
        [this](IntraPlan plan) { take(std::move(plan)); });
}

void PassExecutor::take(IntraPlan plan)
{
    if (std::exchange(m_isGivenUp, false)) {
        end();
        return;
    }
    m_missing = m_passes;
    m_runUps = std::move(plan.runUps);
    for (FastRun &run : plan.runs) {
        for (const int picture : run.pictures)
            m_missing.erase(picture);
        m_waiting.push_back({Form::intra, std::move(run)});
    }
    launchWaiting();
}

void PassExecutor::enqueuePlain(int picture, const QStringList &pass)
{
    m_waiting.push_back({Form::plain, {.arguments = pass, .pictures = {picture}}});
}

void PassExecutor::launchWaiting()
{
    if (m_running.empty() && m_waiting.empty() && !m_missing.empty())
        takeUpMissing();
    while (!m_isSuspended && canLaunchNext()) {
        Job job = std::move(m_waiting.front());
        m_waiting.pop_front();
        launch(std::move(job));
    }
    if (m_isRunning && m_running.empty() && m_waiting.empty())
        end();
}

bool PassExecutor::canLaunchNext() const
{
    if (m_waiting.empty() || m_running.size() >= size_t(m_processes))
        return false;
    // A job that needs all the memory waits for the others, and the others for it.
    return m_running.empty() || (!m_waiting.front().isAlone && !m_running.front().job.isAlone);
}

bool PassExecutor::isInVain() const
{
    const size_t first = m_passes.empty() ? 0 : m_landed.count(m_passes.cbegin()->first);
    return m_landed.size() == first && first < m_passes.size();
}

/// Passes that decode a stretch together; those are no longer missing. False when there are none.
bool PassExecutor::enqueueStretches()
{
    if (std::exchange(m_areStretchesTried, true))
        return false;
    const std::vector<FastRun> runs = stretchRuns(m_missing, m_source, m_runUps);
    for (const FastRun &run : runs) {
        for (const int picture : run.pictures)
            m_missing.erase(picture);
        m_waiting.push_back({Form::stretch, run});
    }
    return !runs.empty();
}

void PassExecutor::takeUpMissing()
{
    if (enqueueStretches() && isVanguardOut())
        return;
    if (isVanguardOut() && m_exhausted >= vanguardSize) {
        logLine(u"th in vain          :-( %ld passes given up", m_missing.size());
        m_leftOut = std::exchange(m_missing, {});
    }
    size_t count = m_missing.size();
    if (isVanguardOut())
        count = std::min(count, size_t(vanguardSize));
    for (; count > 0; --count) {
        const auto pass = m_missing.extract(m_missing.begin());
        enqueuePlain(pass.key(), pass.mapped());
    }
}

void PassExecutor::launch(Job job)
{
    logDebug(u"th run              : %@", job.run.arguments);
    Running running{std::move(job), std::make_unique<taskLauncher>(), std::make_unique<QTimer>(),
                    ReportBuffer(lastWordsLimit)};
    taskLauncher *launcher = running.launcher.get();
    launcher->setDelegate(this);
    launcher->dontConvertDataToString(true);
    launcher->setLimits(pictureLimits(running.job.isAlone ? 1 : m_processes));
    running.limit->setSingleShot(true);
    running.limit->callOnTimeout(launcher, [this, launcher] {
        logLine(u"tl run limit        :-( killed");
        noteFault(RunFault::tookTooLong);
        launcher->tasklauncherTerminate();
    });
    running.limit->start(timeOf(running.job.run));
    const QStringList arguments = running.job.run.arguments;
    m_running.push_back(std::move(running));
    // A launch that fails calls nothing back.
    if (launcher->launchTasksWithArguments(arguments) != taskLauncher::launched)
        QMetaObject::invokeMethod(
            launcher, [this, launcher] { taskLauncherTaskDidEnd(*launcher); },
            Qt::QueuedConnection);
}

void PassExecutor::taskLauncherDidReceiveNewData(taskLauncher &launcher, const QByteArray &data)
{
    const auto found = std::ranges::find_if(
        m_running, [&launcher](const Running &each) { return each.launcher.get() == &launcher; });
    if (found != m_running.end())
        found->lastWords.append(data);
}

void PassExecutor::taskLauncherTaskDidEnd(taskLauncher &launcher)
{
    const auto found = std::ranges::find_if(
        m_running, [&launcher](const Running &each) { return each.launcher.get() == &launcher; });
    if (found == m_running.end())
        return;
    Running ended = std::move(*found);
    m_running.erase(found);
    // Both may still be on the call stack: they may be released, not destroyed, here.
    ended.launcher->setDelegate(nullptr);
    const qint32 status = ended.launcher->terminationStatus();
    ended.launcher.release()->deleteLater();
    ended.limit.release()->deleteLater();
    const QString lastWords = decodedReport(ended.lastWords.bytes());
    jobEnded(ended.job, lastWords, faultOf(status, lastWords));
    launchWaiting();
}

void PassExecutor::noteFault(RunFault fault)
{
    if (m_fault == RunFault::none)
        m_fault = fault;
}

void PassExecutor::jobEnded(const Job &job, const QString &lastWords, RunFault fault)
{
    std::set<int> substituted;
    for (const auto &[picture, substitute] : job.run.substitutes) {
        if (!isWholeJpeg(picturePath(picture)) && isWholeJpeg(substitute) &&
            QFile::rename(substitute, picturePath(picture)))
            substituted.insert(picture);
        else
            QFile::remove(substitute);
    }
    dropOthers(job.run, lastWords);
    countLanded();
    const bool isComplete = std::ranges::all_of(
        job.run.pictures, [this](int picture) { return m_landed.contains(picture); });
    if (!isComplete)
        logLine(u"th not extracted    :-( %@", lastWords.right(500));
    for (const int picture : job.run.pictures) {
        if (m_landed.contains(picture))
            tellTime(job, picture, lastWords, substituted.contains(picture));
        else
            settlePicture(job, picture, fault);
    }
}

void PassExecutor::dropOthers(const FastRun &run, const QString &report)
{
    for (const int picture : run.pictures) {
        const QString path = picturePath(picture);
        const bool isWhole = isWholeJpeg(path);
        if (isWhole && isOfItsTime(run, picture, m_passes.at(picture), report))
            continue;
        // What was whole a moment ago may have been written again.
        m_landed.erase(picture);
        if (!isWhole)
            continue;
        logLine(u"th other picture    :-( %@", path);
        QFile::remove(path);
    }
}

void PassExecutor::tellTime(const Job &job, int picture, const QString &report, bool isSubstitute)
{
    // A quick form may tell of times that nobody has asked for.
    const QStringList &planned = m_passes.at(picture);
    if (!tellsTimes(planned.value(planned.indexOf(u"-vf"_s) + 1)))
        return;
    const QStringList &pass = job.form == Form::plain ? job.run.arguments : planned;
    if (const auto seconds = toldTime(report, pass, picture, isSubstitute))
        Q_EMIT told(picturePath(picture), *seconds);
}

void PassExecutor::settlePicture(const Job &job, int picture, RunFault fault)
{
    const bool isDamaged = QFileInfo(picturePath(picture)).size() > 0;
    QFile::remove(picturePath(picture));
    if (job.form == Form::intra) {
        m_missing.emplace(picture, m_passes.at(picture));
    } else if (job.form == Form::stretch && isVanguardOut()) {
        m_missing.emplace(picture, m_passes.at(picture));
    } else if (job.form == Form::stretch) {
        enqueuePlain(picture, m_passes.at(picture));
    } else if (fault == RunFault::neededMemory && !job.isAlone && m_processes > 1) {
        m_waiting.push_back({Form::plain, job.run, true});
    } else if (isDamaged && m_retried.insert(picture).second) {
        // The pass has found its picture; only the file did not come through.
        enqueuePlain(picture, job.run.arguments);
    } else if (const QStringList next = nextAttempt(job.run.arguments); !next.isEmpty()) {
        noteFault(fault);
        enqueuePlain(picture, next);
    } else {
        noteFault(fault);
        ++m_exhausted;
    }
}

void PassExecutor::countLanded()
{
    const size_t before = m_landed.size();
    for (const int picture : std::views::keys(m_passes)) {
        if (!m_landed.contains(picture) && isWholeJpeg(picturePath(picture)))
            m_landed.insert(picture);
    }
    if (m_landed.size() != before)
        Q_EMIT landed(int(m_landed.size()));
}

void PassExecutor::suspend()
{
    m_isSuspended = true;
    for (const Running &each : m_running) {
        each.launcher->suspend();
        each.limit->stop();
    }
    m_budgetLeft = m_budget.isActive() ? m_budget.remainingTimeAsDuration() : m_budgetLeft;
    m_budget.stop();
}

void PassExecutor::resume()
{
    if (!std::exchange(m_isSuspended, false))
        return;
    for (const Running &each : m_running) {
        each.launcher->resume();
        each.limit->start(timeOf(each.job.run));
    }
    if (m_isRunning)
        m_budget.start(m_budgetLeft);
    if (m_isRunning && !m_planning.isRunning())
        launchWaiting();
}

void PassExecutor::terminate()
{
    if (!m_isRunning)
        return;
    if (m_planning.isRunning()) {
        m_isGivenUp = true;
        m_planning.cancel();
        return;
    }
    m_waiting.clear();
    m_missing.clear();
    m_isSuspended = false;
    for (Running &each : std::exchange(m_running, {})) {
        each.launcher->setDelegate(nullptr);
        each.launcher->tasklauncherTerminate();
        // Waits for the end: a process that still ran could write the file again.
        each.launcher.reset();
        for (const QString &substitute : std::views::values(each.job.run.substitutes))
            QFile::remove(substitute);
    }
    end();
}

void PassExecutor::end()
{
    m_isRunning = false;
    m_budget.stop();
    if (!m_folderWatcher.directories().isEmpty())
        m_folderWatcher.removePaths(m_folderWatcher.directories());
    QMetaObject::invokeMethod(this, &PassExecutor::finished, Qt::QueuedConnection);
}

} // namespace vignar
