#include "shell/platform/dbusTaskbarProgress.h"

#include "settings/applicationPlaces.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <algorithm>
#include <cmath>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// A bar on an icon has less pixels than this has steps.
constexpr double smallestStep = 0.01;

void broadcast(bool isShown, double done)
{
    QDBusMessage update =
        QDBusMessage::createSignal(u"/com/canonical/unity/launcherentry/1"_s,
                                   u"com.canonical.Unity.LauncherEntry"_s, u"Update"_s);
    update << u"application://"_s + bundleIdentifier + u".desktop"_s
           << QVariantMap{{u"progress-visible"_s, isShown}, {u"progress"_s, done}};
    // Without a bus nobody looks.
    QDBusConnection::sessionBus().send(update);
}

} // namespace

void DBusTaskbarProgress::show(double done)
{
    done = std::clamp(done, 0.0, 1.0);
    if (m_isShown && std::abs(done - m_done) < smallestStep)
        return;
    m_isShown = true;
    m_done = done;
    broadcast(true, done);
}

void DBusTaskbarProgress::hide()
{
    if (m_isShown)
        broadcast(false, 0);
    m_isShown = false;
}

} // namespace vignar
