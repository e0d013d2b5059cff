#include "app/signalWatcher.h"

#include <QSocketNotifier>

#include <array>
#include <atomic>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace vignar
{

namespace
{

constexpr std::array endingSignals{SIGINT, SIGTERM, SIGHUP};
int signalSockets[2] = {-1, -1};
std::atomic_int signalCount = 0;

void onSignal(int)
{
    // Only what is safe inside a signal handler: a byte through the socket wakes the loop.
    if (signalCount.fetch_add(1) > 0)
        _exit(interruptedStatus);
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = write(signalSockets[0], &byte, sizeof byte);
}

} // namespace

SignalWatcher::SignalWatcher(QObject *parent) : QObject(parent)
{
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signalSockets) != 0)
        return;
    auto *notifier = new QSocketNotifier(signalSockets[1], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &SignalWatcher::readSignal);
    struct sigaction action {
    };
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    for (const int number : endingSignals)
        sigaction(number, &action, nullptr);
}

SignalWatcher::~SignalWatcher()
{
    for (const int number : endingSignals)
        std::signal(number, SIG_DFL);
    for (int &socket : signalSockets) {
        if (socket >= 0)
            close(socket);
        socket = -1;
    }
}

void SignalWatcher::readSignal()
{
    char byte = 0;
    if (read(signalSockets[1], &byte, sizeof byte) != sizeof byte)
        return;
    m_isInterrupted = true;
    Q_EMIT interrupted();
}

} // namespace vignar
