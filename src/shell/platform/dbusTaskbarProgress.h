#pragma once

#include "shell/platform/desktopServices.h"

namespace vignar
{

/// Broadcasts the progress in the form of Unity's launcher, which most docks and taskbars
/// understand (wiki.ubuntu.com/Unity/LauncherAPI). Says only changes that can be seen.
class DBusTaskbarProgress : public TaskbarProgress
{
public:
    ~DBusTaskbarProgress() override { hide(); }

    void show(double done) override;
    void hide() override;

private:
    bool m_isShown = false;
    double m_done = 0;
};

} // namespace vignar
