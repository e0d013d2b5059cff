#include "shell/windowPlaces.h"

#include "settings/preferences.h"
#include "shell/shellKeys.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include <algorithm>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// Entries of a window's dictionary: the geometry by screen name, and the last screen.
const Key<QString> lastScreenKey{"lastScreen"};
const Key<Dico> placesKey{"places"};

qint64 areaOf(const QRect &rect)
{
    return rect.isEmpty() ? 0 : qint64(rect.width()) * rect.height();
}

QScreen *screenNamed(const QString &name)
{
    const QList<QScreen *> screens = QGuiApplication::screens();
    const auto found = std::find_if(screens.begin(), screens.end(),
                                    [&](QScreen *screen) { return screen->name() == name; });
    return found == screens.end() ? nullptr : *found;
}

QList<QRect> visibleAreas()
{
    QList<QRect> areas;
    const QList<QScreen *> screens = QGuiApplication::screens();
    for (const QScreen *screen : screens)
        areas.append(screen->availableGeometry());
    return areas;
}

} // namespace

QRect keptVisible(const QRect &place, const QList<QRect> &screens)
{
    if (screens.isEmpty())
        return place;
    const QRect screen =
        *std::max_element(screens.begin(), screens.end(), [&](const QRect &one, const QRect &two) {
            return areaOf(one & place) < areaOf(two & place);
        });
    const QSize size = place.size().boundedTo(screen.size());
    const QPoint corner(std::clamp(place.left(), screen.left(), screen.right() + 1 - size.width()),
                        std::clamp(place.top(), screen.top(), screen.bottom() + 1 - size.height()));
    return {corner, size};
}

void restoreWindowPlace(QWidget &window, const QString &name)
{
    const Dico all = prefStored(ShellKeys::windowPlaces).value_or(Dico());
    const Dico ours = all.value(name).toMap();
    const Dico places = read(ours, placesKey).value_or(Dico());
    const QScreen *screen = screenNamed(readStr(ours, lastScreenKey));
    if (!screen)
        screen = window.screen();
    const QString stored = screen ? places.value(screen->name()).toString() : QString();
    if (stored.isEmpty() || !window.restoreGeometry(QByteArray::fromBase64(stored.toLatin1())))
        return;
    if (!window.isMaximized() && !window.isFullScreen())
        window.setGeometry(keptVisible(window.geometry(), visibleAreas()));
}

void saveWindowPlace(const QWidget &window, const QString &name)
{
    const QScreen *screen = window.screen();
    if (!screen)
        return;
    const Dico all = prefStored(ShellKeys::windowPlaces).value_or(Dico());
    Dico ours = all.value(name).toMap();
    Dico places = read(ours, placesKey).value_or(Dico());
    places.insert(screen->name(), QString::fromLatin1(window.saveGeometry().toBase64()));
    write(ours, placesKey, places);
    write(ours, lastScreenKey, screen->name());
    prefWriteChildDico(ShellKeys::windowPlaces, name, ours);
}

} // namespace vignar
