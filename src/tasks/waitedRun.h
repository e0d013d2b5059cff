#pragma once

#include "tasks/blockingRuns.h"

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
    /// Where the stages start; null: where we are.
    QString folder = {};
};

/// Runs it without an event loop and hands over each chunk of the last stage's output
/// as it comes. False when the last stage could not be started, or was still running
/// at the limit, or when the thread was asked to end (QThread::requestInterruption()), and
/// has been killed.
bool runAndWait(const WaitedRun &run, const std::function<void(const QByteArray &)> &take);

/// taskArray() with a limit of one's own.
QString taskArrayWithin(const QStringList &arguments, std::chrono::milliseconds limit);

} // namespace vignar
