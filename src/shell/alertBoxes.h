#pragma once

#include "settings/alerts.h"

#include <QPointer>
#include <QWidget>

namespace vignar
{

/// Alerts as message boxes in front of a window. One with a time-out shows the seconds
/// that are left and closes itself; closed without a button it counts as timed out, which
/// is never a consent.
class AlertBoxes : public AlertPresenter
{
public:
    explicit AlertBoxes(QWidget *window = nullptr) : m_window(window) {}

    AlertAnswer present(const AlertRequest &request) override;

private:
    QPointer<QWidget> m_window;
};

} // namespace vignar
