#include "classShared/lineLog.h"

#include "classShared/printable.h"

#include <QByteArray>

#include <atomic>
#include <cerrno>
#include <mutex>
#include <utility>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

struct Log {
    std::mutex mutex;
    LogSink sink;
    NoticeHandler noticeHandler;
    std::atomic<bool> isDetailed = false;
};

Log &theLog()
{
    static Log log;
    return log;
}

/// One write per line keeps the lines of several threads and child processes apart.
void writeToStandardError(const QString &line)
{
    const QByteArray bytes = line.toUtf8() + '\n';
    qsizetype written = 0;
    while (written < bytes.size()) {
        const auto count = ::write(STDERR_FILENO, bytes.constData() + written,
                                   static_cast<size_t>(bytes.size() - written));
        if (count < 0 && errno != EINTR)
            return;
        written += qMax<qsizetype>(count, 0);
    }
}

} // namespace

LogSink setLogSink(LogSink sink)
{
    Log &log = theLog();
    const std::lock_guard lock(log.mutex);
    return std::exchange(log.sink, std::move(sink));
}

bool isDebug()
{
    return theLog().isDetailed.load(std::memory_order_relaxed);
}

void setDebug(bool isOn)
{
    theLog().isDetailed.store(isOn, std::memory_order_relaxed);
}

void writeLogLine(const QString &text)
{
    // Logs are read on terminals, and they quote file names and the reports of tools.
    const QString line = printableLines(text);
    // A sink that logs a trouble of its own would otherwise wait for itself for ever.
    thread_local bool isInSink = false;
    if (isInSink) {
        writeToStandardError(line);
        return;
    }

    Log &log = theLog();
    const std::lock_guard lock(log.mutex);
    if (!log.sink) {
        writeToStandardError(line);
        return;
    }
    isInSink = true;
    log.sink(line);
    isInSink = false;
}

void setNoticeHandler(NoticeHandler handler)
{
    Log &log = theLog();
    const std::lock_guard lock(log.mutex);
    log.noticeHandler = std::move(handler);
}

void notice(const QString &title, const QString &text, int seconds)
{
    logLine(u"%@ %@", title, text);
    NoticeHandler handler;
    {
        Log &log = theLog();
        const std::lock_guard lock(log.mutex);
        handler = log.noticeHandler;
    }
    if (handler)
        handler(title, text, seconds);
}

} // namespace vignar
