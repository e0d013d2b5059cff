#pragma once

#include "shell/preferences/preferenceControl.h"

#include <QHash>
#include <QScrollArea>

class QFormLayout;
class QGridLayout;

namespace vignar
{

/// One page of the preferences window: a form of the rows of its pane.
class PreferencePage : public QScrollArea
{
    Q_OBJECT

public:
    explicit PreferencePage(QWidget *parent = nullptr);

    void add(const PreferenceRow &row, const PreferenceControl &control);

    /// Below the last row, in the column of the controls.
    void addNote(QWidget *note);

    /// A control with its label.
    void setRowEnabled(const QString &key, bool isEnabled);

    /// As wide as its form: it scrolls up and down only.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

private:
    struct Parts {
        QWidget *label = nullptr;
        QWidget *control = nullptr;
    };

    void addPaired(QWidget *label, QWidget *box, bool beginsGroup);
    QWidget *labelOf(const PreferenceRow &row, const PreferenceControl &control) const;

    QFormLayout *m_form;
    /// Of the last group of paired boxes.
    QGridLayout *m_pairs = nullptr;
    QHash<QString, Parts> m_parts;
};

} // namespace vignar
