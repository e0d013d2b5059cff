#include "cli/workerChannel.h"

#include "cli/terminal.h"
#include "cli/workerMessages.h"

#include <cerrno>
#include <unistd.h>

namespace vignar
{

WorkerChannel::WorkerChannel() : m_notifier(STDIN_FILENO, QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, &WorkerChannel::readAvailable);
}

void WorkerChannel::say(const Dico &message)
{
    // A program that is gone has closed our input as well, which ends us.
    (void)printResult(QString::fromUtf8(messageLine(message)));
}

void WorkerChannel::readAvailable()
{
    const bool isOpen = readMore();
    while (const auto message = takeMessage())
        m_pending.append(*message);
    tellPending();
    if (isOpen)
        return;
    m_notifier.setEnabled(false);
    Q_EMIT closed();
}

bool WorkerChannel::readMore()
{
    char bytes[4096];
    ssize_t length = 0;
    do
        length = ::read(STDIN_FILENO, bytes, sizeof bytes);
    while (length < 0 && errno == EINTR);
    if (length > 0)
        m_unread.append(bytes, length);
    return length > 0;
}

std::optional<Dico> WorkerChannel::takeMessage()
{
    const qsizetype end = m_unread.indexOf('\n');
    if (end < 0)
        return std::nullopt;
    const Dico message = messageOf(m_unread.first(end));
    m_unread.remove(0, end + 1);
    return message;
}

void WorkerChannel::tellPending()
{
    while (!m_pending.isEmpty())
        Q_EMIT told(m_pending.takeFirst());
}

std::optional<Dico> WorkerChannel::awaitAnswer()
{
    do {
        while (auto message = takeMessage()) {
            const QString word = readStr(*message, WorkerKeys::word);
            if (word == WorkerWords::answer)
                return message;
            m_pending.append(*message);
            QMetaObject::invokeMethod(this, &WorkerChannel::tellPending, Qt::QueuedConnection);
            if (word == WorkerWords::stop)
                return std::nullopt;
        }
    } while (readMore());
    return std::nullopt;
}

} // namespace vignar
