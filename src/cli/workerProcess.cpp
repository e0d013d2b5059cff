#include "cli/workerProcess.h"

#include "cli/workerMessages.h"
#include "tasks/childProcess.h"

#include <QCoreApplication>

namespace vignar
{

WorkerProcess::WorkerProcess(const QStringList &arguments, QObject *parent) : QObject(parent)
{
    bindChild(m_process);
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    connect(&m_process, &QProcess::readyReadStandardOutput, this, &WorkerProcess::readMessages);
    connect(&m_process, &QProcess::finished, this, &WorkerProcess::ended, Qt::QueuedConnection);
    // A start can fail before anybody has had the time to listen.
    connect(
        &m_process, &QProcess::errorOccurred, this,
        [this](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart)
                Q_EMIT ended();
        },
        Qt::QueuedConnection);
    m_process.start(QCoreApplication::applicationFilePath(), arguments);
}

void WorkerProcess::say(const Dico &message)
{
    m_process.write(messageLine(message) + '\n');
}

void WorkerProcess::close()
{
    m_process.closeWriteChannel();
}

void WorkerProcess::readMessages()
{
    while (m_process.canReadLine()) {
        const Dico message = messageOf(m_process.readLine());
        if (!message.isEmpty())
            Q_EMIT told(message);
    }
}

} // namespace vignar
