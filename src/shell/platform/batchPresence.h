#pragma once

#include "shell/platform/desktopServices.h"

namespace vignar
{

/// How far a batch has come, for the desktop around the window.
struct BatchState {
    bool isRunning = false;
    bool isPaused = false;
    /// 0 to 1.
    double done = 0;
};

/// Lets the desktop know of the batch: keeps the computer awake while it works, shows its
/// progress in the taskbar, and tells of its end.
///
/// A paused batch lets the computer sleep: nothing is lost by it, and who pauses and walks
/// away does not expect an empty battery.
class BatchPresence
{
public:
    explicit BatchPresence(DesktopServices services) : m_services(std::move(services)) {}

    EndNotifier &notifier() { return *m_services.endNotifier; }

    /// Told as often as the caller likes.
    void setState(const BatchState &state);
    /// The batch is over. Says nothing to a user who is looking at the window.
    void tellEnd(const EndNotice &notice, bool isWindowActive);

private:
    DesktopServices m_services;
};

} // namespace vignar
