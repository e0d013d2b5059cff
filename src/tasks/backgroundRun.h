#pragma once

#include <QObject>
#include <QThread>

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
    BackgroundRun() = default;
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
                             m_thread->wait();
                             // It is on the call stack.
                             m_thread.release()->deleteLater();
                             Answer answer = std::move(*m_answer);
                             m_answer.reset();
                             take(std::move(answer));
                         });
        m_thread->start();
    }

    bool isRunning() const { return m_thread != nullptr; }

    /// Asks the work to end; its answer still comes.
    void cancel()
    {
        if (m_thread)
            m_thread->requestInterruption();
    }

private:
    std::unique_ptr<QThread> m_thread;
    std::optional<Answer> m_answer;
};

} // namespace vignar
