#pragma once

#include "sheet/fastPasses.h"
#include "tasks/backgroundRun.h"
#include "tasks/childProcess.h"
#include "tasks/runFault.h"
#include "tasks/taskLauncher.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

#include <deque>
#include <memory>
#include <set>

namespace vignar
{

/// Runs the extraction passes of one sheet in their quick form, several processes at once.
///
/// A picture that the quick form does not give is made by its plain pass, and then by that
/// one's further attempts. Everything happens on the thread of the executor; finished()
/// comes from the event loop, once for each start().
class PassExecutor : public QObject, private TaskLauncherDelegate
{
    Q_OBJECT

public:
    explicit PassExecutor(QObject *parent = nullptr);
    ~PassExecutor() override;

    /// What is done where hardly a picture can be had.
    enum class Effort {
        /// Every pass is tried to the end.
        everything,
        /// Two missing pictures are tried to the end before the others. When they cannot be had
        /// either, and nothing but the first picture is there, the rest is given up: what the
        /// passes look for is behind the end of the source.
        vanguard
    };

    /// Starts the passes of a source, none of which has left its picture yet. Does nothing
    /// while it runs.
    void start(const PassMap &passes, const SourceDico &source, Effort effort = Effort::everything);

    bool isRunning() const { return m_isRunning; }
    /// Why pictures of the last start() could not be taken, where a run has ended for a reason
    /// of its own.
    RunFault fault() const { return m_fault; }
    /// The last start() took longer than SourceBudget has for its pictures, and was given up.
    bool isLate() const { return m_isLate; }
    /// The passes that the last start() has given up.
    const PassMap &leftOut() const { return m_leftOut; }
    void suspend();
    void resume();
    /// Kills what runs and gives up what waits; finished() follows.
    void terminate();

    /// Processes that run at once: what the preferences say, unless set.
    void setProcesses(int processes) { m_processes = processes; }

    /// Shortens the budget, for tests.
    void setBudget(std::chrono::milliseconds budget) { m_ownBudget = budget; }

Q_SIGNALS:
    /// So many pictures are there now.
    void landed(int pictures);
    /// Where passes tell times: when a picture that is there now is shown, in seconds from
    /// the start of the source.
    void told(const QString &picture, double seconds);
    void finished();

private:
    enum class Form { intra, stretch, plain };
    struct Job {
        Form form = Form::plain;
        FastRun run;
        /// It has run out of memory beside the others, and runs again without them.
        bool isAlone = false;
    };
    struct Running {
        Job job;
        std::unique_ptr<taskLauncher> launcher;
        std::unique_ptr<QTimer> limit;
        ReportBuffer lastWords;
    };

    void taskLauncherDidReceiveNewData(taskLauncher &launcher, const QByteArray &data) override;
    void taskLauncherTaskDidEnd(taskLauncher &launcher) override;

    void take(IntraPlan plan);
    void enqueuePlain(int picture, const QStringList &pass);
    void launchWaiting();
    void launch(Job job);
    void jobEnded(const Job &job, const QString &lastWords, RunFault fault);
    void dropOthers(const FastRun &run, const QString &report);
    void tellTime(const Job &job, int picture, const QString &report, bool isSubstitute);
    void settlePicture(const Job &job, int picture, RunFault fault);
    void noteFault(RunFault fault);
    bool canLaunchNext() const;
    void takeUpMissing();
    bool enqueueStretches();
    /// Pictures are missing and none is there but the first, whose instant hardly depends on
    /// the duration of the source.
    bool isInVain() const;
    bool isVanguardOut() const { return m_effort == Effort::vanguard && isInVain(); }
    void countLanded();
    void end();
    QString picturePath(int picture) const;

    PassMap m_passes;
    SourceDico m_source;
    int m_processes;
    bool m_isRunning = false;
    bool m_isSuspended = false;
    bool m_isGivenUp = false;
    Effort m_effort = Effort::everything;
    bool m_areStretchesTried = false;
    /// Pictures of which every attempt has failed.
    int m_exhausted = 0;
    PassMap m_leftOut;
    BackgroundRun<IntraPlan> m_planning;
    std::deque<Job> m_waiting;
    std::vector<Running> m_running;
    /// Passes that are in none of the intra runs, or that these gave no picture.
    PassMap m_missing;
    std::map<int, double> m_runUps;
    std::set<int> m_landed;
    RunFault m_fault = RunFault::none;
    bool m_isLate = false;
    QTimer m_budget;
    std::optional<std::chrono::milliseconds> m_ownBudget;
    /// Of the budget, while it is suspended.
    std::chrono::milliseconds m_budgetLeft{0};
    /// Pictures whose plain pass was run again because their file was damaged.
    std::set<int> m_retried;
    QFileSystemWatcher m_folderWatcher;
};

} // namespace vignar
