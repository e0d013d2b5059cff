#pragma once

#include "shell/platform/desktopServices.h"

namespace vignar
{

/// The desktop notifications of freedesktop.org.
class DBusEndNotifier : public EndNotifier
{
    Q_OBJECT

public:
    DBusEndNotifier();

    void show(const EndNotice &notice) override;
    void withdraw() override;

private Q_SLOTS:
    // Named after the signals that they receive.
    void ActionInvoked(uint id, const QString &action);
    void ActivationToken(uint id, const QString &token);
    void NotificationClosed(uint id, uint reason);

private:
    /// 0: none shows.
    uint m_id = 0;
    QByteArray m_token;
};

} // namespace vignar
