#include "shell/platform/desktopServices.h"

#include "shell/platform/dbusEndNotifier.h"
#include "shell/platform/dbusSleepInhibitor.h"
#include "shell/platform/dbusTaskbarProgress.h"

namespace vignar
{

DesktopServices makeDesktopServices()
{
    return {std::make_unique<DBusSleepInhibitor>(), std::make_unique<DBusTaskbarProgress>(),
            std::make_unique<DBusEndNotifier>()};
}

} // namespace vignar
