#include "tasks/childProcess.h"

#include "tasks/childGuard.h"
#include "tasks/ffmpegInputs.h"
#include "tasks/toolPlaces.h"

#include <QFileInfo>

#include <csignal>

namespace vignar
{

namespace
{

/// Here and nowhere else the options of execution join the planned ones, so that no way of
/// starting ffmpeg goes without.
QStringList executedArguments(const QStringList &stage)
{
    const QString ffmpeg = ffmpegPath();
    const bool isFfmpeg = !ffmpeg.isEmpty() && QFileInfo(stage.value(0)) == QFileInfo(ffmpeg);
    return isFfmpeg ? confinedToSources(stage.mid(1)) : stage.mid(1);
}

QString decodedLine(QByteArrayView line)
{
    return line.isValidUtf8() ? QString::fromUtf8(line) : QString::fromLatin1(line);
}

} // namespace

void bindChild(QProcess &process)
{
    process.setChildProcessModifier([guard = ChildGuard()] { guard.bindToParent(); });
}

void prepareChild(QProcess &process, const RunLimits &limits)
{
    process.setProcessEnvironment(toolEnvironment());
    process.setStandardInputFile(QProcess::nullDevice());
    process.setChildProcessModifier([guard = ToolGuard(limits)] { guard.apply(); });
}

Pipeline makePipeline(const QList<QStringList> &stages, const RunLimits &limits)
{
    Pipeline pipeline;
    for (const QStringList &stage : stages) {
        auto process = std::make_unique<QProcess>();
        prepareChild(*process, limits);
        process->setProgram(stage.value(0));
        process->setArguments(executedArguments(stage));
        if (!pipeline.empty()) {
            // Nobody would read a pipe here, and a full one stops the tool for ever.
            pipeline.back()->setProcessChannelMode(QProcess::ForwardedErrorChannel);
            pipeline.back()->setStandardOutputProcess(process.get());
        }
        pipeline.push_back(std::move(process));
    }
    return pipeline;
}

void signalChild(const QProcess &process, int signal)
{
    const auto pid = static_cast<pid_t>(process.processId());
    if (process.state() == QProcess::NotRunning || pid <= 0)
        return;
    // A tool may be a script around the real one, so its whole group is meant; a child
    // that has not reached setsid() yet has no group and is met alone.
    if (::kill(-pid, signal) != 0)
        ::kill(pid, signal);
}

int exitStatusOf(const QProcess &process)
{
    constexpr int signalStatusBase = 128;
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode()
                                                        : signalStatusBase + process.exitCode();
}

void endPipeline(Pipeline &pipeline)
{
    for (const auto &process : pipeline)
        signalChild(*process, SIGKILL);
    for (const auto &process : pipeline) {
        if (process->state() != QProcess::NotRunning)
            process->waitForFinished();
    }
}

ReportBuffer::ReportBuffer(qint64 limit) : m_half(limit / 2) {}

void ReportBuffer::append(const QByteArray &bytes)
{
    const qsizetype room = std::min(m_half - m_head.size(), bytes.size());
    m_head += bytes.first(room);
    m_tail += QByteArrayView(bytes).sliced(room);
    // Twice the tail's share is let in before it is cut, or each chunk would move it all.
    if (m_tail.size() > 2 * m_half) {
        m_tail = m_tail.last(m_half);
        m_isCut = true;
    }
}

QByteArray ReportBuffer::bytes() const
{
    if (!m_isCut && m_tail.size() <= m_half)
        return m_head + m_tail;
    return m_head + '\n' + m_tail.last(m_half);
}

void ReportBuffer::clear()
{
    m_head.clear();
    m_tail.clear();
    m_isCut = false;
}

QString decodedReport(const QByteArray &bytes)
{
    QString text;
    text.reserve(bytes.size());
    for (qsizetype start = 0; start < bytes.size();) {
        const qsizetype lineEnd = bytes.indexOf('\n', start);
        const qsizetype next = lineEnd < 0 ? bytes.size() : lineEnd + 1;
        text += decodedLine(QByteArrayView(bytes).sliced(start, next - start));
        start = next;
    }
    return text;
}

} // namespace vignar
