#pragma once

#include "classShared/keys.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QSocketNotifier>

#include <optional>

namespace vignar
{

/// A worker's end of the talk with its program, over its standard streams.
class WorkerChannel : public QObject
{
    Q_OBJECT

public:
    WorkerChannel();

    void say(const Dico &message);

    /// Waits for the answer to a question, without the event loop; nothing when the worker
    /// is to stop, or nobody is there any more. Other messages are told afterwards.
    std::optional<Dico> awaitAnswer();

Q_SIGNALS:
    /// From the event loop.
    void told(const Dico &message);
    /// The program will say nothing more. Told once.
    void closed();

private:
    void readAvailable();
    bool readMore();
    std::optional<Dico> takeMessage();
    void tellPending();

    QSocketNotifier m_notifier;
    QByteArray m_unread;
    QList<Dico> m_pending;
};

} // namespace vignar
