#pragma once

#include "settings/preferencePanel.h"

#include <span>

namespace vignar
{

/// The pages of the preferences window, in their order.
enum class PreferencePane { general, sheet, thumbnails, output };
inline constexpr int preferencePaneCount = 4;

/// What shows a preference.
enum class ControlKind {
    checkBox,
    text,
    folder,
    colour,
    /// A slider with a field beside it.
    slider,
    /// A number with one decimal.
    decimal,
    integer,
    /// A pop-up of thumbnail counts that fill whole rows of the layout.
    limit,
    /// A pop-up of texts to be stored.
    choice,
    layoutChoice,
    formatChoice,
    presetChoice
};

/// One preference as its window shows it: a row of a form.
///
/// Its texts are named after its key: "V_<key>" the label, or what stands behind a check
/// box, "V_<key>_tip" the tool tip, "V_<key>_group" the label before the check boxes that
/// it begins, "V_<key>_unit" what stands behind a number and "V_<key>_placeholder" what an
/// empty field means, where there is one.
struct PreferenceRow {
    /// Another preference that must have a value for this one to count.
    struct Condition {
        const char *key = nullptr;
        int value = 0;
    };

    /// A text to be stored, and the proper name that stands for it.
    struct Option {
        const char *value;
        const char *name;
    };

    QLatin1String key;
    PreferencePane pane;
    ControlKind kind;
    /// Set off from the rows above.
    bool beginsGroup = false;
    /// Check boxes that stand two to a line with those like them.
    bool isPaired = false;
    /// Between the values that a number is changed to; how far it goes is in preferenceRange().
    double step = 1;
    std::span<const Option> options{};
    Condition enabledWhen[2]{};
    /// The panel's own action that follows a change.
    std::optional<PreferencePanel::Action> action{};

    QString label() const;
    QString toolTip() const;
    /// Null where there is none.
    QString groupLabel() const;
    QString unit() const;
    QString placeholder() const;
};

/// Every preference that a control shows, in the order in which they stand: a new one
/// is one more row here and its texts in the string tables.
std::span<const PreferenceRow> preferenceRows();
/// The row of a key, which must have one.
const PreferenceRow &preferenceRow(const QString &key);

/// The layout whose largest number of thumbnails a preference is.
int layoutOfLimit(const QString &key);

} // namespace vignar
