#include "tasks/waitedRun.h"

#include "classShared/lineLog.h"
#include "tasks/childProcess.h"

#include <QDeadlineTimer>

namespace vignar
{

namespace
{

/// False past the deadline.
bool takeOutput(QProcess &process, const QDeadlineTimer &deadline,
                const std::function<void(const QByteArray &)> &take)
{
    const auto remaining = [&deadline] { return static_cast<int>(deadline.remainingTime()); };
    while (!deadline.hasExpired() && process.waitForReadyRead(remaining()))
        take(process.readAll());
    // A tool may close its output long before it ends.
    process.waitForFinished(remaining());
    if (const QByteArray rest = process.readAll(); !rest.isEmpty())
        take(rest);
    return process.state() == QProcess::NotRunning;
}

} // namespace

bool runAndWait(const WaitedRun &run, const std::function<void(const QByteArray &)> &take)
{
    Pipeline pipeline = makePipeline(run.stages);
    QProcess &last = *pipeline.back();
    last.setProcessChannelMode(run.channels);
    for (const auto &process : pipeline) {
        process->setWorkingDirectory(run.folder);
        process->start();
    }
    const bool hasEnded = takeOutput(last, QDeadlineTimer(run.limit), take);
    if (!hasEnded)
        logLine(u"task           :-( killed after %ld ms '%@'", run.limit.count(), last.program());
    endPipeline(pipeline);
    if (last.error() == QProcess::FailedToStart)
        logLine(u"task           :-( '%@' %@", last.program(), last.errorString());
    return hasEnded && last.error() != QProcess::FailedToStart;
}

} // namespace vignar
