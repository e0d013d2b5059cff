#pragma once

#include "tasks/blockingRuns.h"
#include "tasks/runFault.h"
#include "tasks/runLimits.h"

#include <QProcess>

#include <chrono>
#include <functional>

namespace vignar
{

/// A pipeline that its caller waits for.
struct WaitedRun {
    /// Each a tool's path, then its arguments.
    QList<QStringList> stages;
    std::chrono::milliseconds limit{blockingRunLimitMs};
    /// What becomes of the last stage's standard error.
    QProcess::ProcessChannelMode channels = QProcess::MergedChannels;
    RunLimits limits = {};
    /// Where the stages start; null: where we are.
    QString folder = {};
};

/// How a run has ended.
struct WaitedEnd {
    enum class How { byItself, notStarted, killedAtLimit, givenUp };

    How how = How::byItself;
    /// Of the last stage: exitStatusOf(), where it ended by itself.
    int status = 0;

    explicit operator bool() const { return how == How::byItself; }
};

/// Runs it without an event loop and hands over each chunk of the last stage's output as it
/// comes. What is still running at the limit is killed, and so it is, as given up, when the
/// thread is asked to end (QThread::requestInterruption()).
WaitedEnd runAndWait(const WaitedRun &run, const std::function<void(const QByteArray &)> &take);

/// What a run has printed, and what went wrong with it.
struct RunAnswer {
    /// As taskArray() answers it.
    QString text;
    RunFault fault = RunFault::none;
};

/// taskArray() with limits of one's own.
RunAnswer taskArrayRun(const QStringList &arguments, std::chrono::milliseconds limit,
                       const RunLimits &limits = {});
QString taskArrayWithin(const QStringList &arguments, std::chrono::milliseconds limit);

} // namespace vignar
