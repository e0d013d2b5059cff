#pragma once

#include "shell/platform/desktopServices.h"

#include <QDBusUnixFileDescriptor>

class QDBusMessage;

namespace vignar
{

/// Asks the login manager, which knows of sleep and idleness, and where it refuses the
/// screen saver of the session, which knows of idleness alone.
class DBusSleepInhibitor : public QObject, public SleepInhibitor
{
    Q_OBJECT

public:
    enum class Holder { none, loginManager, screenSaver };

    ~DBusSleepInhibitor() override;

    void inhibit(const QString &reason) override;
    void release() override;

    /// Who keeps the computer awake for us now. The desktop answers from the event loop.
    Holder holder() const { return m_holder; }

private:
    void askLoginManager();
    void askScreenSaver();
    void loginManagerAnswered(const QDBusMessage &reply);
    void screenSaverAnswered(const QDBusMessage &reply);

    QString m_reason;
    bool m_isWanted = false;
    /// Counts the wishes: the answer to an older one is given back.
    int m_request = 0;
    Holder m_holder = Holder::none;
    /// The login manager's lock lasts as long as this stays open.
    QDBusUnixFileDescriptor m_lock;
    uint m_cookie = 0;
};

} // namespace vignar
