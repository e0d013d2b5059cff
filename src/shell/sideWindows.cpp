#include "shell/sideWindows.h"

#include "app/batchList.h"
#include "shell/batchDrawer.h"
#include "shell/choiceRow.h"
#include "shell/desktopSession.h"
#include "shell/destinationRow.h"
#include "shell/helpCommands.h"
#include "shell/mainMenu.h"
#include "shell/mainWindow.h"
#include "shell/player/mpvCore.h"
#include "shell/windowPlaces.h"

#include <QAction>
#include <QFileInfo>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

const QString preferencesName = u"preferences"_s;

} // namespace

SideWindows::SideWindows(DesktopSession &session)
    : m_session(session),
      m_player(session.application().whichArrayController()),
      m_sheet(new SheetPreview)
{
    MainWindow &window = session.window();
    connect(window.menu().preferences, &QAction::triggered, this, &SideWindows::showPreferences);
    window.menu().preview->setVisible(true);
    connect(&session, &DesktopSession::previewRequested, &m_player, &PreviewPlayer::open);

    session.help().addComponent(mpvVersion);
    window.drawer().setFooter(m_sheet);
    connect(&window.drawer(), &BatchDrawer::selectionChanged, this, &SideWindows::showSelectedRow);
    connect(&session.application().whichArrayController(), &BatchList::rowChanged, this,
            [this, &window](int row) {
                if (window.drawer().selectedRows() == QList<int>{row})
                    showSelectedRow();
            });
    connect(&window, &MainWindow::closed, this, [this] {
        m_player.close();
        closePreferences();
    });
    showSelectedRow();
}

SideWindows::~SideWindows() = default;

void SideWindows::showPreferences()
{
    if (!m_preferences) {
        m_preferences = std::make_unique<PreferencesDialog>(&m_session.window());
        connect(m_preferences.get(), &PreferencesDialog::preferenceChanged, this,
                &SideWindows::preferenceChanged);
        connect(m_preferences.get(), &QDialog::finished, this,
                [this] { saveWindowPlace(*m_preferences, preferencesName); });
        restoreWindowPlace(*m_preferences, preferencesName);
        followWindow(*m_preferences);
        showSelectedRow();
    }
    m_preferences->reload();
    m_preferences->show();
    m_preferences->raise();
    m_preferences->activateWindow();
}

void SideWindows::closePreferences()
{
    if (m_preferences)
        m_preferences->close();
    m_preferences.reset();
}

/// The main window changes some preferences too.
void SideWindows::followWindow(PreferencesDialog &preferences)
{
    MainWindow &window = m_session.window();
    const auto reload = [&preferences] { preferences.reload(); };
    for (const ChoiceRow *chooser : {&window.layoutChooser(), &window.formatChooser()})
        connect(chooser, &ChoiceRow::chosenByUser, &preferences, reload);
    connect(&window.destination(), &DestinationRow::edited, &preferences, reload);
    connect(&window.menu(), &MainMenu::destinationChosen, &preferences, reload);
}

void SideWindows::preferenceChanged()
{
    m_session.preferencesChanged();
    m_player.planAgain();
    // The next sheet will look different.
    m_changed = QDateTime::currentDateTime();
    m_sheet->setSheet({});
    m_sheet->refresh();
}

/// The row's sheet, where the next one would look the same; empty otherwise.
QString SideWindows::madeSheet(int row) const
{
    const QModelIndex index = m_session.model().index(row);
    const QString path = index.data(BatchModel::sheetRole).toString();
    const QDateTime modified = QFileInfo(path).lastModified();
    const bool isMade = index.data(BatchModel::markerRole) == Puces::puceSuccess;
    const bool isOfBefore = m_changed.isValid() && modified <= m_changed;
    return isMade && modified.isValid() && !isOfBefore && !m_session.model().isOutdated(row)
               ? path
               : QString();
}

void SideWindows::showSelectedRow()
{
    const QList<int> rows = m_session.window().drawer().selectedRows();
    m_sheet->setVisible(rows.size() == 1);
    if (rows.size() != 1) {
        if (m_preferences)
            m_preferences->preview().clearRow();
        return;
    }
    const BatchEntry row = m_session.application().whichArrayController().row(rows.first());
    const SourceDico source = read(row, RowKeys::dico).value_or(SourceDico());
    m_sheet->setSheet(madeSheet(rows.first()));
    m_sheet->setRow(source, read(row, Keys::out));
    // There the layout is the one being chosen.
    if (m_preferences)
        m_preferences->preview().setRow(source);
}

} // namespace vignar
