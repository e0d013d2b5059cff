#pragma once

#include <QList>
#include <QRect>

class QWidget;

namespace vignar
{

/// The rectangle moved, and where need be shrunk, so that it lies on one of the screens:
/// on the one that shows most of it, else on the first.
QRect keptVisible(const QRect &place, const QList<QRect> &screens);

/// Puts a window where it was on the screen that it was on last, if that screen is there,
/// else where it was on the one it is on now. name tells windows apart.
void restoreWindowPlace(QWidget &window, const QString &name);

/// Remembers the place for the screen that the window is on.
void saveWindowPlace(const QWidget &window, const QString &name);

} // namespace vignar
