#pragma once

#include <QIcon>

#include <functional>

class QPainter;

namespace vignar
{

/// Draws into a rectangle with the colour that the icon's state asks for.
using IconPainter = std::function<void(QPainter &, const QRectF &, const QColor &)>;

/// An icon drawn anew for every size and pixel density, in the text colour of the
/// palette in use.
QIcon paintedIcon(IconPainter painter);

/// The desktop theme's icon of a freedesktop name; where it has none, our own drawing of
/// that name from the resources, in the text colour.
QIcon themedIcon(const QString &name);

/// Our own drawing of that name, always.
QIcon ownIcon(const QString &name);

/// Draws our own drawing of that name, its "currentColor" replaced.
void drawOwnIcon(QPainter &painter, const QRectF &place, const QString &name, const QColor &colour);

/// The application's icon.
QIcon applicationIcon();

} // namespace vignar
