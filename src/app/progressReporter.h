#pragma once

#include "app/outlets.h"
#include "app/progressValue.h"
#include "tasks/childProcess.h"
#include "tasks/runFault.h"
#include "tasks/runLimits.h"
#include "tasks/taskLauncher.h"

#include <QElapsedTimer>
#include <QTimer>

#include <array>
#include <chrono>

namespace vignar
{

/// One tool run and how its progress is read.
struct RunRequest {
    QStringList arguments;
    /// What counts as 100 percent, in the unit that the mode reads; 0: unknown.
    double progressMaximum = 0;
    int parseMode = parseNothing;
    RunnerKind kind = RunnerKind::main;
    RunLimits limits = {};
    /// Longest time that it may take, where that is less than ProgressReporter::runLimit.
    std::chrono::milliseconds time = std::chrono::hours(1);
};

/// Runs the tools of the three runners and turns their text into progress.
///
/// Each end of a run is told once through done(), from the event loop and never from
/// inside tasklauncherStart(). A run that outlasts runLimit is killed.
class ProgressReporter : public QObject, private TaskLauncherDelegate
{
    Q_OBJECT

public:
    /// Longest time that one tool run may take, time in suspension left out: many times
    /// what a probe or a single picture needs on a slow disk, so that only a tool that
    /// hangs or prints without end is ever stopped by it.
    static constexpr std::chrono::minutes runLimit{15};

    explicit ProgressReporter(Outlets &outlets, QObject *parent = nullptr);
    ~ProgressReporter() override;

    /// False when there is nothing to run. A tool that cannot be launched ends through
    /// done() like any other.
    bool tasklauncherStart(const RunRequest &request);

    bool isRunning(RunnerKind kind) const;
    /// Whole output of the last analysis run that was collected.
    QString analysisTaskVerboseMStr() const;
    void releaseVerbose();
    /// Last lines of the main runner's last run, for explaining a failure.
    QString lastWords(RunnerKind kind) const;
    qint32 lastStatus(RunnerKind kind) const;
    /// What went wrong with the last run, where it was not stopped by us on purpose.
    RunFault lastFault(RunnerKind kind) const;

    void tasklauncherSuspend(RunnerKind kind);
    void tasklauncherResume(RunnerKind kind);
    /// Kills the run; its end comes through done().
    void tasklauncherTerminate(RunnerKind kind);

    /// Resets the failure watch of the analysis tool.
    void resetFailureWatch() { m_taskFfAnalysisFailureOccurrencesInt = -1; }

    /// Shortens runLimit, for tests.
    void setRunLimit(std::chrono::milliseconds limit) { m_runLimit = limit; }

Q_SIGNALS:
    /// A run of this runner has ended and its widgets are reset.
    void done(RunnerKind kind);

private:
    struct Slot {
        std::unique_ptr<taskLauncher> launcher;
        QStringList arguments;
        double maximum = 0;
        int parseMode = parseNothing;
        double previousValue = noPreviousValue;
        ReportBuffer report;
        qint32 lastStatus = 0;
        std::chrono::milliseconds time{0};
        bool isPastLimit = false;
        QTimer limit;
    };

    void taskLauncherDidReceiveNewData(taskLauncher &launcher, const QByteArray &data) override;
    void taskLauncherTaskDidEnd(taskLauncher &launcher) override;

    Slot &slot(RunnerKind kind) { return m_slots[static_cast<size_t>(kind)]; }
    const Slot &slot(RunnerKind kind) const { return m_slots[static_cast<size_t>(kind)]; }
    std::optional<RunnerKind> kindOf(const taskLauncher &launcher) const;
    void readChunk(RunnerKind kind, const QString &text);
    void taskLauncherDone(RunnerKind kind);
    void prepareBar(RunnerKind kind);
    bool isAnalysisFailing(const QString &text);
    void storeLoudness(const QString &text);
    void showProgress(RunnerKind kind, double value);

    Outlets &m_outlets;
    std::array<Slot, 3> m_slots;
    std::chrono::milliseconds m_runLimit = runLimit;
    /// Zero-time reports of the analysis tool in a row; -1 after a reset.
    int m_taskFfAnalysisFailureOccurrencesInt = 0;
};

} // namespace vignar
