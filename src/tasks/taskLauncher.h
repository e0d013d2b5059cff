#pragma once

#include "tasks/runLimits.h"

#include <QObject>
#include <QProcess>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

namespace vignar
{

class taskLauncher;

/// Told of a run by its launcher, always on the launcher's thread. Every callback is
/// optional. A delegate may delete the launcher later (deleteLater), not inside one.
class TaskLauncherDelegate
{
public:
    virtual ~TaskLauncherDelegate() = default;

    /// A chunk of output, while running and not converted to bytes; chunks of both
    /// streams may interleave and split lines.
    virtual void taskLauncherDidReceiveNewString(taskLauncher &, const QString &) {}
    /// A chunk of output as raw bytes, after dontConvertDataToString(true).
    virtual void taskLauncherDidReceiveNewData(taskLauncher &, const QByteArray &) {}
    virtual void taskLauncherTaskDidSuspend(taskLauncher &) {}
    virtual void taskLauncherTaskDidResume(taskLauncher &) {}
    /// Exactly once per launcher, after the run ended or was killed.
    virtual void taskLauncherTaskDidEnd(taskLauncher &) {}
};

/// Runs one tool, or a pipeline of tools, without blocking.
///
/// A launcher is new, then running, at times suspended, then ended; it never runs again.
/// Chunks come while it runs (what was on its way also while it is suspended), suspend
/// and resume callbacks in pairs, the end last. Ending a suspended run resumes it first.
/// Stages that still run when the last one has ended are killed. Destruction kills what
/// runs and tells nothing. How children are run: docs/decisions/child-processes.md.
class taskLauncher : public QObject
{
    Q_OBJECT

public:
    /// terminationStatus() of a run that was killed before its last stage had ended.
    static constexpr qint32 killedStatus = -7654312;
    enum LaunchResult {
        launched = 0,
        noArguments = 1,
        emptyStage = 2,
        /// Also for a list that ends with "|".
        toolNotFound = 3,
        /// A launcher runs once in its life, because it tells its end once; the run that
        /// it has, ended or not, stays as it is.
        alreadyLaunched = 4
    };

    explicit taskLauncher(QObject *parent = nullptr);
    ~taskLauncher() override;

    void setDelegate(TaskLauncherDelegate *delegate);
    TaskLauncherDelegate *delegate() const;

    /// Starts the stages of the list ("|" separates them). A result other than launched
    /// starts nothing and sends no callback.
    LaunchResult launchTasksWithArguments(const QStringList &arguments);

    void dontConvertDataToString(bool convert);
    /// What each stage may use up; for a launch that is still to come.
    void setLimits(const RunLimits &limits);
    bool isRunning() const;
    bool isSuspended() const;
    /// Of an ended run: the last stage's exit code, 128 plus the number of the signal that
    /// ended it, 126 when a stage could not be executed, or killedStatus.
    qint32 terminationStatus() const;

    void suspend();
    void resume();
    void tasklauncherTerminate();

    /// The launcher's identity for TaskBroadcast; fixed at the first call.
    qint32 uid();

private:
    struct Private;
    std::unique_ptr<Private> d;
};

/// The control notifications: each reaches the launcher of that uid alone.
class TaskBroadcast : public QObject
{
    Q_OBJECT

public:
    static TaskBroadcast &instance();

    /// name is "fabKillTasks", "fabPauseTasks" or "fabResumeTasks"; others do nothing.
    void post(const QString &name, qint32 uid);

Q_SIGNALS:
    void posted(const QString &name, qint32 uid);
};

} // namespace vignar
