#include "shell/desktopSession.h"

#include "classShared/format.h"
#include "classShared/paths.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "shell/batchDrawer.h"
#include "shell/choiceRow.h"
#include "shell/destinationRow.h"
#include "shell/dropArea.h"
#include "shell/fileManager.h"
#include "shell/helpCommands.h"
#include "shell/mainMenu.h"
#include "shell/noticeBar.h"
#include "shell/openPanel.h"
#include "shell/progressPanel.h"
#include "shell/rowCommands.h"
#include "shell/shellKeys.h"

#include <QAction>
#include <QClipboard>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMimeData>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int recentLimit = 8;

} // namespace

DesktopSession::DesktopSession(const QString &stateFolder)
    : m_application(*this),
      m_model(m_application.whichArrayController()),
      m_window(m_model),
      m_saved(stateFolder, [this] { return state(); }),
      m_help(new HelpCommands(m_window, this))
{
    m_rowsTimer.setSingleShot(true);
    connect(&m_rowsTimer, &QTimer::timeout, this, &DesktopSession::showRows);
    m_endTimer.setInterval(std::chrono::seconds(3));
    connect(&m_endTimer, &QTimer::timeout, this, &DesktopSession::retryEnding);
    connectWindow();
    connectMenu();
    new RowCommands(*this, this);
    preferencesChanged();
    setDropArea(u"dndApp"_s, localised(u"dndCaptionFolderFiles"_s));
    setGoAllowed(false);
}

DesktopSession::~DesktopSession()
{
    // Children of the window may still tell of their end.
    m_window.disconnect(this);
}

void DesktopSession::connectWindow()
{
    connect(&m_window, &MainWindow::dropped, this, &DesktopSession::takeFiles);
    connect(&m_window, &MainWindow::activated, &m_model, &BatchModel::lookForSources);
    connect(&m_window, &MainWindow::closed, this, &DesktopSession::endWhenIdle);
    connect(&m_window, &MainWindow::choiceHintPressed, this, [this] {
        QList<int> all;
        for (int row = 0; row < m_model.rowCount(); ++row)
            all.append(row);
        applyChoices(all);
    });
    m_window.setCloseQuestion([this] { return mayClose(); });
    connect(&m_window.dropArea(), &DropArea::clicked, this, &DesktopSession::showOpenPanel);
    connect(&m_window.dropArea(), &DropArea::stopRequested, this,
            [this] { m_application.iba_taskStopBt(RunnerKind::analysis); });
    connect(&m_window.layoutChooser(), &ChoiceRow::chosenByUser, this, [this](int layout) {
        prefWrite(Prefs::prefCheckMatrix, layout);
        updateChoiceHint();
    });
    connect(&m_window.formatChooser(), &ChoiceRow::chosenByUser, this, [this](int format) {
        prefWrite(Prefs::prefDpi, format);
        updateChoiceHint();
    });
    connect(&m_window.destination(), &DestinationRow::edited, this,
            [](const QString &path) { prefWrite(Prefs::prefDefautDstPathStr, path); });
    connect(&m_window.destination(), &DestinationRow::openFolderRequested, this,
            &DesktopSession::openDestination);
    ProgressPanel &progress = m_window.progress();
    connect(&progress, &ProgressPanel::goPressed, this, [this] { go(); });
    connect(&progress, &ProgressPanel::pausePressed, this, &DesktopSession::setPaused);
    connect(&progress, &ProgressPanel::stopPressed, this, &DesktopSession::stop);
    for (const auto signal : {&BatchList::rowAdded, &BatchList::rowChanged, &BatchList::rowRemoved})
        connect(&m_application.whichArrayController(), signal, this, &DesktopSession::rowsChanged);
}

void DesktopSession::connectMenu()
{
    MainMenu &menu = m_window.menu();
    connect(menu.open, &QAction::triggered, this, &DesktopSession::showOpenPanel);
    connect(menu.openFolder, &QAction::triggered, this, &DesktopSession::showFolderPanel);
    connect(menu.paste, &QAction::triggered, this, &DesktopSession::paste);
    connect(menu.openDestination, &QAction::triggered, this, &DesktopSession::openDestination);
    connect(menu.quit, &QAction::triggered, this, &DesktopSession::quit);
    connect(menu.go, &QAction::triggered, this, [this] { go(); });
    connect(menu.pause, &QAction::triggered, this, &DesktopSession::setPaused);
    connect(menu.stop, &QAction::triggered, this, &DesktopSession::stop);
    connect(menu.retryFailed, &QAction::triggered, this, [this] { go(RowsToMake::unmade); });
    connect(menu.retryAll, &QAction::triggered, this, [this] { go(); });
    connect(&menu, &MainMenu::destinationChosen, this, [this](const QString &folder) {
        m_window.destination().setPath(folder);
        prefWrite(Prefs::prefDefautDstPathStr, folder);
    });
    menu.setRecentDestinations(prefStored(ShellKeys::recentDestinations).value_or(QStringList()));
}

bool DesktopSession::isRunning() const
{
    return m_window.progress().isRunning();
}

bool DesktopSession::canStart() const
{
    return m_isGoAllowed && !isRunning() && !m_window.dropArea().isBusy();
}

void DesktopSession::preferencesChanged()
{
    m_window.layoutChooser().choose(mixLayout);
    m_window.layoutChooser().choose(prefValue(Prefs::prefCheckMatrix));
    m_window.formatChooser().choose(prefValue(Prefs::prefDpi) == 0 ? 0 : 1);
    m_window.destination().setPath(prefValue(Prefs::prefDefautDstPathStr));
    namePictureFormat(m_window.formatChooser());
    m_model.choicesChanged();
    updateChoiceHint();
}

void DesktopSession::openFiles(const QStringList &paths)
{
    m_application.applicationOpenFiles(paths, FoldersTaken::all);
    m_saved.changed();
}

void DesktopSession::takeFiles(const QStringList &paths)
{
    m_application.draggedFiles(paths, FoldersTaken::all);
    m_saved.changed();
}

void DesktopSession::showOpenPanel()
{
    if (const QStringList paths = chooseSources(m_window); !paths.isEmpty())
        takeFiles(paths);
}

void DesktopSession::showFolderPanel()
{
    if (const QStringList paths = chooseSourceFolder(m_window); !paths.isEmpty())
        takeFiles(paths);
}

void DesktopSession::paste()
{
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    if (const QStringList paths = data ? localPaths(*data) : QStringList(); !paths.isEmpty())
        takeFiles(paths);
    else
        showSheetNotice(localised(u"V_paste_nothing"_s), {});
}

void DesktopSession::go(RowsToMake rows)
{
    // A notice offers it at any time.
    if (m_window.dropArea().isBusy() && !isRunning())
        m_deferredGo = rows;
    else
        begin([this, rows] { return m_application.iba_batchGoBt(rows); });
}

void DesktopSession::makeAgain(const QList<int> &rows)
{
    QSet<QString> sources;
    for (const int row : rows)
        sources.insert(m_application.whichArrayController().sourcePath(row));
    begin([this, &sources] { return m_application.iba_batchGoBt(sources); });
}

void DesktopSession::begin(const std::function<bool()> &start)
{
    if (!canStart())
        return;
    m_model.lookForSources();
    m_run = {};
    if (start()) {
        rememberDestination();
        // What was told of the batch before.
        for (const QString &title :
             {u"D_fin_GUI"_s, u"D_echec_1"_s, u"D_echec_1bis"_s, u"V_crash_title"_s})
            m_window.notices().withdraw(localised(title));
    }
    m_saved.changed();
}

void DesktopSession::setPaused(bool isPaused)
{
    if (!isRunning())
        return;
    m_application.iba_taskPauseBt(isPaused);
    m_window.progress().setPaused(isPaused);
    updateCommands();
}

void DesktopSession::stop()
{
    m_application.iba_taskStopBt(RunnerKind::main);
}

void DesktopSession::rememberDestination()
{
    const QString folder = expandTilde(destinationField());
    QStringList recent = prefStored(ShellKeys::recentDestinations).value_or(QStringList());
    recent.removeAll(folder);
    recent.prepend(folder);
    recent = recent.mid(0, recentLimit);
    prefWrite(ShellKeys::recentDestinations, recent);
    m_window.menu().setRecentDestinations(recent);
}

void DesktopSession::openDestination()
{
    const QString sheets = m_application.sheetDriver().destination();
    const QString folder = QFileInfo(sheets).isDir() ? sheets : expandTilde(destinationField());
    if (!QFileInfo(folder).isDir()) {
        showSheetNotice(localised(u"V_destination_missing"_s), sheets);
        return;
    }
    openFolder(folder, this, [this, folder](bool isShown) {
        if (!isShown)
            showSheetNotice(localised(u"V_noFileManager"_s), folder);
    });
}

void DesktopSession::openSheet(const QString &path)
{
    if (!openFile(path))
        showSheetNotice(localised(u"V_sheet_missing"_s), path);
}

void DesktopSession::showFile(const QString &path)
{
    if (!QFileInfo(QFileInfo(path).path()).isDir()) {
        showSheetNotice(localised(u"V_row_missing"_s), path);
        return;
    }
    showInFileManager(path, this, [this, path](bool isShown) {
        if (!isShown)
            showSheetNotice(localised(u"V_noFileManager"_s), path);
    });
}

void DesktopSession::applyChoices(const QList<int> &rows)
{
    BatchList &batch = m_application.whichArrayController();
    for (const int row : rows) {
        if (batch.resultat(row) != Puces::puceCurrent)
            batch.setChoices(row, chosenLayout(), chosenFormat());
    }
}

void DesktopSession::setGoAllowed(bool isAllowed)
{
    m_isGoAllowed = isAllowed;
    updateCommands();
}

void DesktopSession::updateCommands()
{
    const bool isStartable = canStart();
    const int count = m_model.rowCount();
    bool isAnyUnmade = false;
    for (int row = 0; row < count; ++row)
        isAnyUnmade |= m_application.whichArrayController().resultat(row) != Puces::puceSuccess;
    m_window.progress().setGoEnabled(isStartable);
    MainMenu &menu = m_window.menu();
    menu.go->setEnabled(isStartable);
    menu.retryAll->setEnabled(isStartable && count > 0);
    menu.retryFailed->setEnabled(isStartable && isAnyUnmade);
    menu.pause->setEnabled(isRunning());
    menu.pause->setChecked(m_window.progress().isPaused());
    menu.stop->setEnabled(isRunning());
    menu.removeAll->setEnabled(count > 0);
    const QString ready =
        count == 1 ? localised(u"V_idle_one"_s) : filled(localised(u"V_idle_many"_s), count);
    m_window.progress().setIdleText(count == 0 ? localised(u"V_idle_empty"_s) : ready);
}

void DesktopSession::updateChoiceHint()
{
    const BatchList &batch = m_application.whichArrayController();
    bool isOther = false;
    for (int row = 0; row < batch.count(); ++row) {
        const BatchEntry &entry = batch.row(row);
        isOther |=
            batch.resultat(row) != Puces::puceCurrent &&
            (read(entry, Keys::out) != chosenLayout() || read(entry, Keys::dpi) != chosenFormat());
    }
    m_window.setChoiceHint(isOther ? localised(u"V_choices_hint"_s) : QString());
}

void DesktopSession::rowsChanged()
{
    // A run begins with a change of every row: a list of thousands is looked at once.
    m_rowsTimer.start(0);
    m_saved.changed();
}

void DesktopSession::showRows()
{
    m_rowsTimer.stop();
    const BatchList &batch = m_application.whichArrayController();
    int toMake = 0;
    for (int row = 0; row < batch.count(); ++row) {
        toMake += batch.isToMake(row) || batch.resultat(row) == Puces::puceCurrent;
    }
    if (isRunning())
        m_window.progress().setRows(m_run.finished(), m_run.finished() + toMake);
    updateCommands();
    updateChoiceHint();
}

} // namespace vignar
