#pragma once

#include "settings/preferenceKeys.h"

#include <optional>

namespace vignar
{

/// The controls of the preferences panel, each named by the key that it shows.
///
/// Values: segment indexes int; check boxes 1 on, 0 off, -1 mixed; limits the text of
/// the selected item; colours six hexadecimal digits; the width and the border size
/// numbers; everything else as typed. The destination shows in the main window too.
class PreferencePanel
{
public:
    /// What follows a control's value: the panel's own actions.
    enum class Action {
        setColor,
        prefDpi,
        prefComputerWidthAuto,
        prefComputerWidth,
        thLimitAuto,
        multimediaHDBt,
        prepareDestination,
        showUpdateControls
    };

    virtual ~PreferencePanel() = default;

    virtual void setControl(const QString &key, const QVariant &value) = 0;
    virtual QVariant control(const QString &key) const = 0;
    /// Segments of the segmented control of this key.
    virtual int segmentCount(const QString &key) const = 0;
    virtual void perform(Action action) = 0;
};

/// With stored values: puts each into its control, the default where it is absent or
/// not valid, and answers nothing. Without: reads every control and answers the
/// dictionary of their values.
std::optional<Dico> prefs2GuiApp(PreferencePanel &panel, const std::optional<Dico> &stored);

} // namespace vignar
