#pragma once

#include <QDBusConnection>
#include <QDBusMessage>

#include <functional>

namespace vignar
{

/// A service on the bus, as a method call names it.
struct DBusPlace {
    QString service;
    QString path;
    QString interface;

    QDBusMessage call(const QString &method, const QVariantList &arguments) const;
};

/// Sends a call and waits for nothing. done gets the reply or the error from the event
/// loop, at once where there is no bus, and never after the end of context.
void callThen(const QDBusConnection &bus, const QDBusMessage &call, QObject *context,
              const std::function<void(const QDBusMessage &reply)> &done);

} // namespace vignar
