#include "shell/platform/dbusSleepInhibitor.h"

#include "classShared/lineLog.h"
#include "settings/applicationPlaces.h"
#include "shell/platform/dbusCall.h"

#include <QDBusReply>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

const DBusPlace &loginManager()
{
    static const DBusPlace place{u"org.freedesktop.login1"_s, u"/org/freedesktop/login1"_s,
                                 u"org.freedesktop.login1.Manager"_s};
    return place;
}

const DBusPlace &screenSaver()
{
    static const DBusPlace place{u"org.freedesktop.ScreenSaver"_s,
                                 u"/org/freedesktop/ScreenSaver"_s,
                                 u"org.freedesktop.ScreenSaver"_s};
    return place;
}

void giveBack(uint cookie)
{
    QDBusConnection::sessionBus().call(screenSaver().call(u"UnInhibit"_s, {cookie}),
                                       QDBus::NoBlock);
}

} // namespace

DBusSleepInhibitor::~DBusSleepInhibitor()
{
    release();
}

void DBusSleepInhibitor::inhibit(const QString &reason)
{
    if (m_isWanted)
        return;
    m_isWanted = true;
    m_reason = reason;
    ++m_request;
    askLoginManager();
}

void DBusSleepInhibitor::askLoginManager()
{
    const QDBusMessage call = loginManager().call(
        u"Inhibit"_s, {u"sleep:idle"_s, QString(bundleName), m_reason, u"block"_s});
    callThen(QDBusConnection::systemBus(), call, this,
             [this, request = m_request](const QDBusMessage &reply) {
                 // The lock of a wish that is over closes with its answer.
                 if (m_isWanted && request == m_request)
                     loginManagerAnswered(reply);
             });
}

void DBusSleepInhibitor::loginManagerAnswered(const QDBusMessage &reply)
{
    const QDBusReply<QDBusUnixFileDescriptor> lock(reply);
    if (!lock.isValid() || !lock.value().isValid()) {
        logLine(u"sleepInhibitor      : login manager :-( %@", reply.errorName());
        askScreenSaver();
        return;
    }
    m_lock = lock.value();
    m_holder = Holder::loginManager;
    logLine(u"sleepInhibitor      : held by the login manager");
}

void DBusSleepInhibitor::askScreenSaver()
{
    const QDBusMessage call = screenSaver().call(u"Inhibit"_s, {QString(bundleName), m_reason});
    callThen(QDBusConnection::sessionBus(), call, this,
             [this, request = m_request](const QDBusMessage &reply) {
                 if (m_isWanted && request == m_request)
                     screenSaverAnswered(reply);
                 else if (const QDBusReply<uint> cookie(reply); cookie.isValid())
                     giveBack(cookie);
             });
}

void DBusSleepInhibitor::screenSaverAnswered(const QDBusMessage &reply)
{
    const QDBusReply<uint> cookie(reply);
    if (!cookie.isValid()) {
        logLine(u"sleepInhibitor      : screen saver :-( %@", reply.errorName());
        return;
    }
    m_cookie = cookie;
    m_holder = Holder::screenSaver;
    logLine(u"sleepInhibitor      : held by the screen saver");
}

void DBusSleepInhibitor::release()
{
    if (m_holder == Holder::screenSaver)
        giveBack(m_cookie);
    if (m_holder != Holder::none)
        logLine(u"sleepInhibitor      : released");
    m_lock = QDBusUnixFileDescriptor();
    m_holder = Holder::none;
    m_isWanted = false;
}

} // namespace vignar
