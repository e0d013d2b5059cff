#pragma once

#include <QObject>

namespace vignar
{

/// Turns the signals that ask a program to end (interrupt, terminate, hang-up) into one
/// call on the event loop. A second signal ends the process at once with status 130;
/// its tools die with it.
class SignalWatcher : public QObject
{
    Q_OBJECT

public:
    explicit SignalWatcher(QObject *parent = nullptr);
    ~SignalWatcher() override;

    bool isInterrupted() const { return m_isInterrupted; }

Q_SIGNALS:
    void interrupted();

private:
    void readSignal();

    bool m_isInterrupted = false;
};

/// Exit status of a program that was interrupted.
inline constexpr int interruptedStatus = 130;

} // namespace vignar
