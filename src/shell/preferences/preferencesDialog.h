#pragma once

#include "shell/preferences/preferenceControl.h"

#include <QDialog>
#include <QHash>

class QAction;
class QLabel;
class QPushButton;
class QTabWidget;

namespace vignar
{

class NameExample;
class NoticeBar;
class PreferencePage;
class SheetPreview;

/// The preferences window, beside it how a sheet will look. Every change is stored at
/// once; it has no button that applies. Each control is named by its preference's key.
class PreferencesDialog : public QDialog, public PreferencePanel
{
    Q_OBJECT

public:
    /// Filled from the store.
    explicit PreferencesDialog(QWidget *parent = nullptr);

    SheetPreview &preview() const { return *m_preview; }
    void showPane(PreferencePane pane);

    /// Forgets the stored values of these preferences; a notice offers the way back.
    void restoreDefaults(const QStringList &keys, const QString &notice);

    void setControl(const QString &key, const QVariant &value) override;
    QVariant control(const QString &key) const override;
    int segmentCount(const QString &key) const override;
    void perform(Action action) override;

public Q_SLOTS:
    /// Fills every control from the store, where somebody else has changed it.
    void reload();

Q_SIGNALS:
    /// The user has changed a preference here, and it is stored.
    void preferenceChanged(const QString &key);

protected:
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void makeRows();
    QWidget *makePreviewColumn();
    QWidget *makeFooter();
    PreferencePage &pageOf(const PreferenceRow &row) const;
    static QStringList keysOf(std::optional<PreferencePane> pane);

    void edited(const PreferenceRow &row);
    void store(const QString &key);
    void storeAndTell(const QString &key);
    void showPreset();
    bool followColours();
    void keepOwnColours();
    void updateDependents();
    void quietNotes();
    void restorePane();
    void restoreAll();
    void updateRestore();
    void fill();

    QTabWidget *m_tabs;
    NoticeBar *m_notices;
    SheetPreview *m_preview;
    QLabel *m_description;
    NameExample *m_nameExample;
    QPushButton *m_restore;
    QAction *m_restorePane;
    QHash<QString, PreferenceControl> m_controls;
    /// Values of preferences that no control shows.
    Dico m_unshown;
    /// The colours that the user had mixed before a preset took their place.
    QString m_ownPage;
    QString m_ownBorder;
};

} // namespace vignar
