#pragma once

#include "classShared/lineLog.h"

#include <QStringList>

#include <functional>
#include <mutex>

namespace vignar
{

/// The lines of the log while this lives, from all threads.
class LogLines
{
public:
    /// Called with each line, on the thread that writes it; it must not log.
    std::function<void(const QString &)> watch;

    LogLines()
    {
        setLogSink([this](const QString &line) {
            {
                const std::lock_guard lock(m_mutex);
                m_lines.append(line);
            }
            if (watch)
                watch(line);
        });
    }
    ~LogLines() { setLogSink({}); }
    LogLines(const LogLines &) = delete;
    LogLines &operator=(const LogLines &) = delete;

    QStringList all() const
    {
        const std::lock_guard lock(m_mutex);
        return m_lines;
    }
    int count(const QString &text) const { return int(all().filter(text).size()); }

private:
    mutable std::mutex m_mutex;
    QStringList m_lines;
};

} // namespace vignar
