#include "shell/platform/dbusCall.h"

#include <QDBusError>
#include <QDBusPendingCallWatcher>

namespace vignar
{

QDBusMessage DBusPlace::call(const QString &method, const QVariantList &arguments) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    return message;
}

void callThen(const QDBusConnection &bus, const QDBusMessage &call, QObject *context,
              const std::function<void(const QDBusMessage &reply)> &done)
{
    if (!bus.isConnected()) {
        // A watcher of a call without a bus would never end.
        done(call.createErrorReply(QDBusError::Disconnected, QString()));
        return;
    }
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context, [watcher, done] {
        watcher->deleteLater();
        done(watcher->reply());
    });
}

} // namespace vignar
