#pragma once

#include "tasks/runLimits.h"

#include <QProcess>
#include <QStringList>

#include <memory>
#include <vector>

namespace vignar
{

/// Gives a process, before its start, a session of its own, so that a Ctrl-C on our
/// terminal is answered by us alone, and on Linux the kernel's promise that the child dies
/// with us, kill -9 included.
///
/// The kernel ties the promise to the thread that starts the process: a thread other
/// than the main one must outlive the children that it starts.
void bindChild(QProcess &process);

/// Prepares a tool before its start: its environment, standard input from nowhere, limits and
/// few rights (childGuard.h), and what bindChild() does.
void prepareChild(QProcess &process, const RunLimits &limits = {});

/// The processes of a pipeline, first stage first.
using Pipeline = std::vector<std::unique_ptr<QProcess>>;

/// Prepared processes, one for each stage (a tool's path, then its arguments), joined
/// like a shell pipe and not yet started. ffmpeg is kept to its sources (ffmpegInputs.h). What a
/// stage before the last writes to standard error goes where ours goes.
Pipeline makePipeline(const QList<QStringList> &stages, const RunLimits &limits = {});

/// Signals a process and the children that it has made itself; does nothing when it
/// does not run.
void signalChild(const QProcess &process, int signal);

/// Of a process that has ended: its exit code, or 128 plus the number of the signal that ended
/// it, as a shell tells it.
int exitStatusOf(const QProcess &process);

/// Kills what still runs of a pipeline and waits until it is gone.
void endPipeline(Pipeline &pipeline);

/// The largest report of a tool that is kept, in bytes: of a longer one the head and
/// the tail remain, half each.
inline constexpr qint64 reportLimit = qint64{8} * 1024 * 1024;

/// Collects a report within reportLimit.
class ReportBuffer
{
public:
    explicit ReportBuffer(qint64 limit = reportLimit);
    void append(const QByteArray &bytes);
    /// Head and tail; where bytes were dropped, a line break joins the two.
    QByteArray bytes() const;
    void clear();

private:
    qsizetype m_half;
    bool m_isCut = false;
    QByteArray m_head;
    QByteArray m_tail;
};

/// The bytes as UTF-8; a line that is not valid UTF-8 is read as Latin-1, so that one
/// odd title in a report does not spoil the file names around it.
QString decodedReport(const QByteArray &bytes);

} // namespace vignar
