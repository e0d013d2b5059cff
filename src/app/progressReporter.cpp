#include "app/progressReporter.h"

#include "classShared/lineLog.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// Enough of a run's last words to explain why it failed.
constexpr qint64 lastWordsLimit = 64 * 1024;
/// Zero-time reports in a row after which the analysis tool is taken to be stuck.
constexpr int failurePatternLimit = 10;

ProgressBar barOf(RunnerKind kind)
{
    switch (kind) {
    case RunnerKind::analysis:
        return ProgressBar::analysis;
    case RunnerKind::extra:
        return ProgressBar::extra;
    case RunnerKind::main:
        break;
    }
    return ProgressBar::main;
}

bool isCollected(RunnerKind kind, int parseMode)
{
    return kind == RunnerKind::analysis &&
           (parseMode == parseCollected || parseMode == parseCollectedMaximum);
}

} // namespace

ProgressReporter::ProgressReporter(Outlets &outlets, QObject *parent)
    : QObject(parent), m_outlets(outlets)
{
    for (const RunnerKind kind : {RunnerKind::main, RunnerKind::analysis, RunnerKind::extra}) {
        QTimer &limit = slot(kind).limit;
        limit.setSingleShot(true);
        connect(&limit, &QTimer::timeout, this, [this, kind] {
            logLine(u"tl run limit        :-( killed: %@", slot(kind).arguments);
            slot(kind).isPastLimit = true;
            tasklauncherTerminate(kind);
        });
    }
}

ProgressReporter::~ProgressReporter()
{
    for (Slot &each : m_slots) {
        if (each.launcher)
            each.launcher->setDelegate(nullptr);
    }
}

bool ProgressReporter::tasklauncherStart(const RunRequest &request)
{
    const RunnerKind kind = request.kind;
    m_outlets.setWheelSpinning(kind, true);
    logLine(u"tl start       task : main=%d, analysis=%d, extra=%d", kind == RunnerKind::main,
            kind == RunnerKind::analysis, kind == RunnerKind::extra);
    if (request.arguments.isEmpty()) {
        logLine(u"tl start  argsArray :-( nil || empty");
        m_outlets.setWheelSpinning(kind, false);
        return false;
    }
    Slot &run = slot(kind);
    run.arguments = request.arguments;
    run.previousValue = noPreviousValue;
    run.maximum = request.progressMaximum > 0 ? request.progressMaximum : 0;
    run.parseMode = request.parseMode;
    run.report = ReportBuffer(isCollected(kind, run.parseMode) ? reportLimit : lastWordsLimit);
    if (isCollected(kind, run.parseMode))
        logDebug(u"analysisTaskVerboseM:-) alloc");
    prepareBar(kind);

    run.launcher = std::make_unique<taskLauncher>();
    run.launcher->setDelegate(this);
    run.launcher->dontConvertDataToString(true);
    run.launcher->setLimits(request.limits);
    run.isPastLimit = false;
    run.time = std::min(m_runLimit, request.time);
    run.limit.start(run.time);
    const auto launch = run.launcher->launchTasksWithArguments(request.arguments);
    if (launch != taskLauncher::launched) {
        logLine(u"tlStart launch error:-( #%ld (from args: %@)", static_cast<int>(launch),
                request.arguments);
        run.lastStatus = launch;
        QMetaObject::invokeMethod(
            this, [this, kind] { taskLauncherDone(kind); }, Qt::QueuedConnection);
    }
    return true;
}

void ProgressReporter::prepareBar(RunnerKind kind)
{
    const Slot &run = slot(kind);
    const bool isDeterminate = run.parseMode != parseIndeterminate && run.maximum > 0;
    m_outlets.setProgressMaximum(barOf(kind), isDeterminate ? run.maximum : 0);
    logDebug(u"Progress Max Value  : %.3f", run.maximum);
}

bool ProgressReporter::isRunning(RunnerKind kind) const
{
    return slot(kind).launcher != nullptr;
}

QString ProgressReporter::analysisTaskVerboseMStr() const
{
    return decodedReport(slot(RunnerKind::analysis).report.bytes());
}

void ProgressReporter::releaseVerbose()
{
    slot(RunnerKind::analysis).report.clear();
}

QString ProgressReporter::lastWords(RunnerKind kind) const
{
    return decodedReport(slot(kind).report.bytes());
}

qint32 ProgressReporter::lastStatus(RunnerKind kind) const
{
    return slot(kind).lastStatus;
}

RunFault ProgressReporter::lastFault(RunnerKind kind) const
{
    const Slot &run = slot(kind);
    return run.isPastLimit ? RunFault::tookTooLong : faultOf(run.lastStatus, lastWords(kind));
}

void ProgressReporter::tasklauncherSuspend(RunnerKind kind)
{
    Slot &run = slot(kind);
    if (!run.launcher || run.launcher->isSuspended())
        return;
    run.launcher->suspend();
    run.limit.stop();
}

void ProgressReporter::tasklauncherResume(RunnerKind kind)
{
    Slot &run = slot(kind);
    if (!run.launcher || !run.launcher->isSuspended())
        return;
    run.launcher->resume();
    run.limit.start(run.time);
}

void ProgressReporter::tasklauncherTerminate(RunnerKind kind)
{
    if (slot(kind).launcher)
        slot(kind).launcher->tasklauncherTerminate();
}

std::optional<RunnerKind> ProgressReporter::kindOf(const taskLauncher &launcher) const
{
    for (const RunnerKind kind : {RunnerKind::main, RunnerKind::analysis, RunnerKind::extra}) {
        if (slot(kind).launcher.get() == &launcher)
            return kind;
    }
    return std::nullopt;
}

void ProgressReporter::taskLauncherDidReceiveNewData(taskLauncher &launcher, const QByteArray &data)
{
    const auto kind = kindOf(launcher);
    if (!kind)
        return;
    slot(*kind).report.append(data);
    // Everything looked for in a chunk is ASCII; a character cut in two by the chunk's
    // end must not hide it.
    readChunk(*kind, QString::fromLatin1(data));
}

void ProgressReporter::readChunk(RunnerKind kind, const QString &text)
{
    logDebug(u"tl didReceiveNewStr - deb : '%@'", text);
    if (kind == RunnerKind::analysis && isAnalysisFailing(text)) {
        QMetaObject::invokeMethod(
            this, [this, kind] { tasklauncherTerminate(kind); }, Qt::QueuedConnection);
        return;
    }
    storeLoudness(text);
    const QString token = progressToken(slot(kind).parseMode);
    if (!token.isNull())
        showProgress(kind, progressValue(text, token));
}

bool ProgressReporter::isAnalysisFailing(const QString &text)
{
    if (!text.contains("time="_L1) || !text.contains("time=00:00:00.00"_L1)) {
        resetFailureWatch();
        return false;
    }
    ++m_taskFfAnalysisFailureOccurrencesInt;
    logLine(u"taskFfAnalysisFailu…# %ld", m_taskFfAnalysisFailureOccurrencesInt);
    return m_taskFfAnalysisFailureOccurrencesInt >= failurePatternLimit;
}

void ProgressReporter::storeLoudness(const QString &text)
{
    if (const QString volume = maximumVolume(text); !volume.isNull()) {
        logLine(u"tl normalize max vol: %@", volume);
        prefWriteChildDico(RunKeys::processEncDico, Keys::normalizedVolumedetect, volume);
    }
    if (const QString loudness = averageLoudness(text); !loudness.isNull()) {
        logLine(u"tl normalize average: to=%@", loudness);
        prefWriteChildDico(RunKeys::processEncDico, Keys::normalized, loudness);
    }
}

void ProgressReporter::showProgress(RunnerKind kind, double value)
{
    Slot &run = slot(kind);
    logDebug(u"f = %.1f/%.0f (prev=%.1f), str : %@", value, run.maximum, run.previousValue,
             run.arguments.value(0));
    const auto percent = percentToShow(value, run.maximum, run.previousValue);
    if (!percent)
        return;
    const ProgressBar bar = barOf(kind);
    if (run.previousValue < 0) {
        m_outlets.setProgressMaximum(bar, run.maximum);
        m_outlets.setProgressValue(bar, 0.01);
    }
    run.previousValue = value;
    m_outlets.setProgressValue(bar, value);
    m_outlets.setPercentText(kind, filled(u"%ld %%", *percent));
    if (run.parseMode == parseSteps)
        m_outlets.setActionText(kind,
                                filled(u"%@ %.0f/%.0f", localised(u"th"_s), value, run.maximum));
    logDebug(u"progress            : %@", filled(u"%ld %%", *percent));
}

void ProgressReporter::taskLauncherTaskDidEnd(taskLauncher &launcher)
{
    const auto kind = kindOf(launcher);
    if (!kind)
        return;
    const qint32 status = launcher.terminationStatus();
    slot(*kind).lastStatus = status;
    if (status == taskLauncher::killedStatus)
        logLine(u"tlTaskDidEnd        : tl interrupted");
    else if (status != 0)
        logLine(u"tlTaskDidEnd        : tl task failed, error :-( %ld (%@)", status,
                slot(*kind).arguments);
    taskLauncherDone(*kind);
}

void ProgressReporter::taskLauncherDone(RunnerKind kind)
{
    Slot &run = slot(kind);
    if (!run.launcher)
        return;
    run.limit.stop();
    // The launcher is still on the call stack: it may be released, not destroyed, here.
    run.launcher->setDelegate(nullptr);
    run.launcher.release()->deleteLater();
    m_outlets.setWheelSpinning(kind, false);
    m_outlets.setProgressMaximum(barOf(kind), 0);
    m_outlets.setPercentText(kind, {});
    if (kind == RunnerKind::analysis)
        resetFailureWatch();
    QMetaObject::invokeMethod(
        this, [this, kind] { Q_EMIT done(kind); }, Qt::QueuedConnection);
}

} // namespace vignar
