#include "tasks/waitedRun.h"

#include "classShared/lineLog.h"
#include "tasks/childProcess.h"

#include <QDeadlineTimer>
#include <QThread>

#include <algorithm>

namespace vignar
{

namespace
{

/// How long a thread that is asked to end may take to notice it, in milliseconds.
constexpr qint64 noticeMs = 50;

bool isInterrupted()
{
    return QThread::currentThread()->isInterruptionRequested();
}

/// False past the deadline and where the thread is asked to end.
bool takeOutput(QProcess &process, const QDeadlineTimer &deadline,
                const std::function<void(const QByteArray &)> &take)
{
    const auto slice = [&deadline] {
        return static_cast<int>(std::min(noticeMs, deadline.remainingTime()));
    };
    while (process.state() != QProcess::NotRunning && !deadline.hasExpired() && !isInterrupted()) {
        if (process.waitForReadyRead(slice()))
            take(process.readAll());
        else
            // A tool may close its output long before it ends.
            process.waitForFinished(slice());
    }
    if (const QByteArray rest = process.readAll(); !rest.isEmpty())
        take(rest);
    return process.state() == QProcess::NotRunning;
}

} // namespace

WaitedEnd runAndWait(const WaitedRun &run, const std::function<void(const QByteArray &)> &take)
{
    using How = WaitedEnd::How;
    if (isInterrupted())
        return {How::givenUp};
    Pipeline pipeline = makePipeline(run.stages, run.limits);
    QProcess &last = *pipeline.back();
    last.setProcessChannelMode(run.channels);
    for (const auto &process : pipeline) {
        process->setWorkingDirectory(run.folder);
        process->start();
    }
    const bool hasEnded = takeOutput(last, QDeadlineTimer(run.limit), take);
    const WaitedEnd end = hasEnded          ? WaitedEnd{How::byItself, exitStatusOf(last)}
                          : isInterrupted() ? WaitedEnd{How::givenUp}
                                            : WaitedEnd{How::killedAtLimit};
    if (end.how == How::givenUp)
        logLine(u"task           :-( given up '%@'", last.program());
    else if (end.how == How::killedAtLimit)
        logLine(u"task           :-( killed after %ld ms '%@'", run.limit.count(), last.program());
    endPipeline(pipeline);
    if (last.error() != QProcess::FailedToStart)
        return end;
    logLine(u"task           :-( '%@' %@", last.program(), last.errorString());
    return {How::notStarted};
}

} // namespace vignar
