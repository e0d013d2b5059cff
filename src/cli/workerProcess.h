#pragma once

#include "classShared/keys.h"

#include <QObject>
#include <QProcess>

#include <optional>

namespace vignar
{

/// The program's end of the talk with one worker process, which dies with the program.
class WorkerProcess : public QObject
{
    Q_OBJECT

public:
    WorkerProcess(const QStringList &arguments, QObject *parent);

    void say(const Dico &message);
    /// The worker ends once it has no source in hand.
    void close();

    /// Position of the source that it works on.
    std::optional<size_t> source() const { return m_source; }
    void setSource(std::optional<size_t> position) { m_source = position; }

Q_SIGNALS:
    void told(const Dico &message);
    /// It runs no more, or never has. From the event loop, once, after its last message.
    void ended();

private:
    void readMessages();

    QProcess m_process;
    std::optional<size_t> m_source;
};

} // namespace vignar
