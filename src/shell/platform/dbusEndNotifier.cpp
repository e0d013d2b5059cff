#include "shell/platform/dbusEndNotifier.h"

#include "classShared/lineLog.h"
#include "settings/applicationPlaces.h"
#include "shell/platform/dbusCall.h"

#include <QDBusReply>

#include <utility>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

// The notification service calls a click on the notice itself "default".
constexpr QLatin1String clickAction{"default"};
constexpr QLatin1String folderAction{"folder"};
constexpr int lastsAsUsual = -1;

const DBusPlace &notifications()
{
    static const DBusPlace place{u"org.freedesktop.Notifications"_s,
                                 u"/org/freedesktop/Notifications"_s,
                                 u"org.freedesktop.Notifications"_s};
    return place;
}

} // namespace

DBusEndNotifier::DBusEndNotifier()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    const auto listen = [&](const QString &signal, const char *slot) {
        bus.connect(notifications().service, notifications().path, notifications().interface,
                    signal, this, slot);
    };
    if (!bus.isConnected())
        return;
    listen(u"ActionInvoked"_s, SLOT(ActionInvoked(uint, QString)));
    listen(u"ActivationToken"_s, SLOT(ActivationToken(uint, QString)));
    listen(u"NotificationClosed"_s, SLOT(NotificationClosed(uint, uint)));
}

void DBusEndNotifier::show(const EndNotice &notice)
{
    const QStringList actions{clickAction, notice.title, folderAction, notice.folderButton};
    const QVariantMap hints{{u"desktop-entry"_s, QString(bundleIdentifier)},
                            {u"category"_s, u"transfer.complete"_s}};
    const QDBusMessage call = notifications().call(
        u"Notify"_s, {QString(bundleName), m_id, QString(bundleIdentifier), notice.title,
                      notice.text, actions, hints, lastsAsUsual});
    callThen(QDBusConnection::sessionBus(), call, this, [this](const QDBusMessage &reply) {
        const QDBusReply<uint> id(reply);
        m_id = id.isValid() ? id.value() : 0;
        if (!id.isValid())
            logLine(u"endNotifier         :-( %@", reply.errorName());
    });
}

void DBusEndNotifier::withdraw()
{
    if (m_id != 0)
        QDBusConnection::sessionBus().call(notifications().call(u"CloseNotification"_s, {m_id}),
                                           QDBus::NoBlock);
    m_id = 0;
}

void DBusEndNotifier::ActionInvoked(uint id, const QString &action)
{
    if (id != m_id || m_id == 0)
        return;
    const QByteArray token = std::exchange(m_token, {});
    if (action == folderAction)
        Q_EMIT folderRequested();
    else if (action == clickAction)
        Q_EMIT activated(token);
}

void DBusEndNotifier::ActivationToken(uint id, const QString &token)
{
    if (id == m_id)
        m_token = token.toUtf8();
}

void DBusEndNotifier::NotificationClosed(uint id, uint)
{
    if (id == m_id)
        m_id = 0;
}

} // namespace vignar
