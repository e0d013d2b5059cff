#pragma once

#include "app/batchEntry.h"
#include "shell/player/previewPlayer.h"
#include "shell/preferences/preferencesDialog.h"
#include "shell/preferences/sheetPreview.h"

#include <QDateTime>

namespace vignar
{

class DesktopSession;

/// What opens beside the main window, each when it is first asked for: the preferences, the
/// player, and below the list how the sheet of the selected row will look.
class SideWindows : public QObject
{
    Q_OBJECT

public:
    explicit SideWindows(DesktopSession &session);
    ~SideWindows() override;

private:
    void showPreferences();
    void followWindow(PreferencesDialog &preferences);
    void preferenceChanged();
    void closePreferences();
    void showSelectedRow();
    QString madeSheet(int row) const;

    DesktopSession &m_session;
    PreviewPlayer m_player;
    SheetPreview *m_sheet;
    /// When a preference was changed last; sheets of before look different.
    QDateTime m_changed;
    std::unique_ptr<PreferencesDialog> m_preferences;
};

} // namespace vignar
