#pragma once

#include "shell/preferences/preferenceRows.h"

#include <functional>

class QWidget;

namespace vignar
{

/// The control of one preference, whatever it looks like.
struct PreferenceControl {
    /// Named by the preference's key.
    QWidget *widget = nullptr;
    /// Where a label's mnemonic leads.
    QWidget *buddy = nullptr;
    /// As PreferencePanel::control().
    std::function<QVariant()> value;
    /// As PreferencePanel::setControl(); does not count as an edit. What the control cannot
    /// show leaves it as it was.
    std::function<void(const QVariant &)> show;
    /// 0 but for segmented controls.
    int segmentCount = 0;
};

/// Makes the control of a row, without a parent; edited is called after each change that
/// the user makes.
PreferenceControl makePreferenceControl(const PreferenceRow &row,
                                        const std::function<void()> &edited);

} // namespace vignar
