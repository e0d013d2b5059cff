#include "shell/platform/startupToken.h"

#include <QWidget>

namespace vignar
{

namespace
{

// Wayland desktops give the first, X11 desktops the second, some both.
constexpr auto activationVariable = "XDG_ACTIVATION_TOKEN";
constexpr auto startupVariable = "DESKTOP_STARTUP_ID";

} // namespace

QByteArray startupTokenFromEnvironment()
{
    const QByteArray token = qgetenv(activationVariable);
    return token.isEmpty() ? qgetenv(startupVariable) : token;
}

void raiseWindow(QWidget &window, const QByteArray &token)
{
    // The toolkit hands this variable to a Wayland compositor with the next activation; a
    // program that we start is not to inherit it.
    if (!token.isEmpty())
        qputenv(activationVariable, token);
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
    qunsetenv(activationVariable);
}

} // namespace vignar
