#pragma once

#include <QObject>
#include <QThread>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace vignar
{

/// A piece of work on a thread of its own, whose answer comes back through the event loop.
///
/// The blocking runs in it (blockingRuns.h) are killed by cancel(). Used on one thread.
template <class Answer>
class BackgroundRun
{
public:
    BackgroundRun()
    {
        m_limit.setSingleShot(true);
        m_limit.callOnTimeout([this] {
            m_isLate = true;
            cancel();
        });
    }
    /// Cancels the work and waits for its end; its answer is dropped.
    ~BackgroundRun()
    {
        if (!m_thread)
            return;
        cancel();
        m_thread->wait();
    }
    Q_DISABLE_COPY_MOVE(BackgroundRun)

    /// Starts the work, which must not be running. take gets the answer on this thread, while
    /// the context, which must live here and not outlive this object, exists.
    void start(QObject *context, std::function<Answer()> work, std::function<void(Answer)> take)
    {
        m_thread.reset(QThread::create([this, work = std::move(work)] { m_answer = work(); }));
        QObject::connect(m_thread.get(), &QThread::finished, context,
                         [this, take = std::move(take)] {
                             m_limit.stop();
                             m_thread->wait();
                             // It is on the call stack.
                             m_thread.release()->deleteLater();
                             Answer answer = std::move(*m_answer);
                             m_answer.reset();
                             take(std::move(answer));
                         });
        m_isLate = false;
        m_thread->start();
    }

    bool isRunning() const { return m_thread != nullptr; }

    /// Asks the work to end; its answer still comes.
    void cancel()
    {
        if (m_thread)
            m_thread->requestInterruption();
    }

    /// Cancels the work that was started when it takes longer.
    void cancelAfter(std::chrono::milliseconds limit) { m_limit.start(limit); }

    /// The last work was cancelled because it took too long.
    bool isLate() const { return m_isLate; }

private:
    std::unique_ptr<QThread> m_thread;
    std::optional<Answer> m_answer;
    QTimer m_limit;
    bool m_isLate = false;
};

} // namespace vignar
