#pragma once

#include <QByteArray>

class QWidget;

namespace vignar
{

/// What the desktop gave this process to prove that the user has started it; empty when
/// it gave nothing. To be asked before the QApplication is made, which takes it away.
QByteArray startupTokenFromEnvironment();

/// Brings a window to the front, out of the icon it may be, with the token of the start
/// that asks for it. Where the desktop does not accept that, it marks the window instead.
void raiseWindow(QWidget &window, const QByteArray &token);

} // namespace vignar
