#include "tasks/taskLauncher.h"

#include "classShared/lineLog.h"
#include "settings/applicationPlaces.h"
#include "tasks/argumentStages.h"
#include "tasks/childProcess.h"

#include <QDateTime>
#include <QDir>

#include <algorithm>
#include <csignal>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

/// What a shell answers for a tool that is there but cannot be executed.
constexpr int cannotExecuteStatus = 126;

/// The absolute path of a tool: the file itself, else a resource of that name; null when
/// neither exists. Absolute, because a bare name would be searched for in $PATH.
QString toolPath(const QString &item)
{
    const QDir resources(applicationPlaces().resourceFolder());
    for (const QString &path : {item, resources.absoluteFilePath(item)}) {
        if (const QFileInfo file(path); file.isFile())
            return file.absoluteFilePath();
    }
    return {};
}

/// Puts the path of each stage's tool in the place of its first item; false when a tool
/// is missing.
bool locateTools(QList<QStringList> &stages)
{
    for (QStringList &stage : stages) {
        const QString path = toolPath(stage.value(0));
        if (path.isNull())
            return false;
        stage.first() = path;
    }
    return true;
}

/// Null for bytes that are not ASCII.
QString asciiText(const QByteArray &bytes)
{
    const auto isAscii = [](char byte) { return static_cast<uchar>(byte) < 128; };
    return std::ranges::all_of(bytes, isAscii) ? QString::fromLatin1(bytes) : QString();
}

/// Seconds since 1970, moved on when two launchers ask within one second.
qint32 nextUid()
{
    static qint64 last = 0;
    last = std::max(last + 1, QDateTime::currentSecsSinceEpoch());
    return static_cast<qint32>(last);
}

} // namespace

struct taskLauncher::Private {
    explicit Private(taskLauncher &launcher) : q(launcher) {}

    void watchTasks();
    void stopListening();
    void deliver(const QByteArray &bytes);
    void deliverText(const QByteArray &bytes);
    void lastTaskEnded();
    void taskFailed(QProcess::ProcessError error);
    void endByItself(int status);
    void notifyThatTaskEnded();
    void control(const QString &name);

    taskLauncher &q;
    Pipeline tasks;
    RunLimits limits;
    TaskLauncherDelegate *delegate = nullptr;
    bool alreadyNotified = false;
    bool isRunning = false;
    bool isSuspended = false;
    bool terminateNoAbort = false;
    bool convert = false;
    qint32 terminationStatus = 0;
    std::optional<qint32> uid;
};

void taskLauncher::Private::watchTasks()
{
    // Queued, because a tool that cannot be started may be told of inside start(), and
    // the launch must have answered before the run can end.
    for (const auto &task : tasks)
        connect(
            task.get(), &QProcess::errorOccurred, &q,
            [this](QProcess::ProcessError error) { taskFailed(error); }, Qt::QueuedConnection);
    QProcess *last = tasks.back().get();
    connect(last, &QProcess::readyReadStandardError, &q,
            [this, last] { deliver(last->readAllStandardError()); });
    connect(last, &QProcess::readyReadStandardOutput, &q,
            [this, last] { deliver(last->readAllStandardOutput()); });
    connect(last, &QProcess::finished, &q, [this] { lastTaskEnded(); });
}

void taskLauncher::Private::stopListening()
{
    for (const auto &task : tasks)
        task->disconnect(&q);
    TaskBroadcast::instance().disconnect(&q);
}

void taskLauncher::Private::deliver(const QByteArray &bytes)
{
    if (bytes.isEmpty() || !isRunning || !delegate)
        return;
    if (convert)
        delegate->taskLauncherDidReceiveNewData(q, bytes);
    else
        deliverText(bytes);
}

void taskLauncher::Private::deliverText(const QByteArray &bytes)
{
    const QString text = asciiText(bytes);
    if (text.isNull())
        return;
    if (text.size() != bytes.size())
        logLine(u"data vs str length  = %lu vs %lu", bytes.size(), text.size());
    delegate->taskLauncherDidReceiveNewString(q, text);
}

void taskLauncher::Private::lastTaskEnded()
{
    // A delegate that runs an event loop inside a callback, as an alert does, keeps later
    // chunks from being announced.
    deliver(tasks.back()->readAllStandardError());
    deliver(tasks.back()->readAllStandardOutput());
    endByItself(exitStatusOf(*tasks.back()));
}

void taskLauncher::Private::taskFailed(QProcess::ProcessError error)
{
    if (error == QProcess::FailedToStart)
        endByItself(cannotExecuteStatus);
}

void taskLauncher::Private::endByItself(int status)
{
    // Terminated from inside the last delivery, or before a queued error came through.
    if (!isRunning)
        return;
    terminationStatus = status;
    terminateNoAbort = true;
    q.tasklauncherTerminate();
}

void taskLauncher::Private::notifyThatTaskEnded()
{
    if (!delegate || alreadyNotified)
        return;
    alreadyNotified = true;
    delegate->taskLauncherTaskDidEnd(q);
}

void taskLauncher::Private::control(const QString &name)
{
    if (name == "fabKillTasks"_L1)
        q.tasklauncherTerminate();
    else if (name == "fabPauseTasks"_L1)
        q.suspend();
    else if (name == "fabResumeTasks"_L1)
        q.resume();
}

taskLauncher::taskLauncher(QObject *parent) : QObject(parent), d(std::make_unique<Private>(*this))
{
}

taskLauncher::~taskLauncher()
{
    // Nothing to release is the ordinary end of a launcher that was never needed.
    if (d->tasks.empty())
        logDebug(u"taskLauncher :-( try to release a yet-released task");
    d->stopListening();
    endPipeline(d->tasks);
}

void taskLauncher::setDelegate(TaskLauncherDelegate *delegate)
{
    d->delegate = delegate;
}

TaskLauncherDelegate *taskLauncher::delegate() const
{
    return d->delegate;
}

taskLauncher::LaunchResult taskLauncher::launchTasksWithArguments(const QStringList &arguments)
{
    if (!d->tasks.empty())
        return alreadyLaunched;
    if (arguments.isEmpty())
        return noArguments;
    auto stages = splitStages(arguments);
    if (!stages)
        return emptyStage;
    if (!locateTools(*stages))
        return toolNotFound;

    d->tasks = makePipeline(*stages, d->limits);
    d->isRunning = true;
    d->watchTasks();
    for (const auto &task : d->tasks)
        task->start();
    return launched;
}

void taskLauncher::setLimits(const RunLimits &limits)
{
    d->limits = limits;
}

void taskLauncher::dontConvertDataToString(bool convert)
{
    d->convert = convert;
}

bool taskLauncher::isRunning() const
{
    return d->isRunning;
}

bool taskLauncher::isSuspended() const
{
    return d->isSuspended;
}

qint32 taskLauncher::terminationStatus() const
{
    return d->terminationStatus;
}

void taskLauncher::suspend()
{
    if (!d->isRunning || d->isSuspended)
        return;
    std::for_each(d->tasks.rbegin(), d->tasks.rend(),
                  [](const auto &task) { signalChild(*task, SIGSTOP); });
    d->isSuspended = true;
    if (d->delegate)
        d->delegate->taskLauncherTaskDidSuspend(*this);
}

void taskLauncher::resume()
{
    if (d->tasks.empty() || !d->isSuspended)
        return;
    for (const auto &task : d->tasks)
        signalChild(*task, SIGCONT);
    d->isSuspended = false;
    if (d->delegate)
        d->delegate->taskLauncherTaskDidResume(*this);
}

void taskLauncher::tasklauncherTerminate()
{
    d->isRunning = false;
    if (d->tasks.empty())
        return;
    d->stopListening();
    resume();
    for (const auto &task : d->tasks)
        signalChild(*task, SIGKILL);
    if (!d->terminateNoAbort)
        d->terminationStatus = killedStatus;
    d->notifyThatTaskEnded();
}

qint32 taskLauncher::uid()
{
    if (d->uid)
        return *d->uid;
    d->uid = nextUid();
    connect(&TaskBroadcast::instance(), &TaskBroadcast::posted, this,
            [this](const QString &name, qint32 uid) {
                if (uid == d->uid)
                    d->control(name);
            });
    return *d->uid;
}

TaskBroadcast &TaskBroadcast::instance()
{
    static TaskBroadcast broadcast;
    return broadcast;
}

void TaskBroadcast::post(const QString &name, qint32 uid)
{
    Q_EMIT posted(name, uid);
}

} // namespace vignar
