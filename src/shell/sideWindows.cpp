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
    m_made.layout = -1;
    m_sheet->setSheet({});
    m_sheet->refresh();
}

/// The row's sheet, where it shows how a sheet of the row looks; empty otherwise.
QString SideWindows::madeSheet(const BatchEntry &row)
{
    const SourceDico source = read(row, RowKeys::dico).value_or(SourceDico());
    const QString path = m_session.model().fate(readStr(source, Keys::srcPathStr)).sheet;
    const MadeSheet made{path, QFileInfo(path).lastModified(),
                         read(row, Keys::out).value_or(mixLayout),
                         read(row, Keys::dpi).value_or(1)};
    if (readStr(row, RowKeys::resultat) != Puces::puceSuccess || !made.modified.isValid())
        return {};
    if (path != m_made.path || made.modified != m_made.modified)
        m_made = made;
    return made == m_made ? path : QString();
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
    m_sheet->setSheet(madeSheet(row));
    m_sheet->setRow(source, read(row, Keys::out));
    // There the layout is the one being chosen.
    if (m_preferences)
        m_preferences->preview().setRow(source);
}

} // namespace vignar
