#pragma once

#include "app/appDelegate.h"
#include "shell/batchModel.h"
#include "shell/mainWindow.h"
#include "shell/runTally.h"
#include "shell/savedBatch.h"

#include <QObject>

#include <functional>
#include <optional>

namespace vignar
{

class HelpCommands;

/// The desktop program from its window to its end: a screen in front of the batch control.
///
/// The preferences, the logs, the work folder and the alerts are set up before it is made.
class DesktopSession : public QObject, private Outlets
{
    Q_OBJECT

public:
    /// stateFolder keeps the batch list between runs.
    explicit DesktopSession(const QString &stateFolder);
    ~DesktopSession() override;

    MainWindow &window() { return m_window; }
    appDelegate &application() { return m_application; }
    BatchModel &model() { return m_model; }
    HelpCommands &help() { return *m_help; }
    bool isRunning() const;

    /// Shows the window with the list of the last run, then takes in the paths.
    void start(const QStringList &paths = {});

    /// Files handed over by the desktop, at any time.
    void openFiles(const QStringList &paths);
    /// While sources are analysed: as soon as that is over.
    void go(RowsToMake rows = RowsToMake::all);
    /// Makes the sheets of these rows and of no other.
    void makeAgain(const QList<int> &rows);
    void setPaused(bool isPaused);
    void stop();

    /// Opens a sheet with the desktop's program for it; a notice where it is gone.
    void openSheet(const QString &path);
    /// Shows a file in the file manager; a notice where there is none.
    void showFile(const QString &path);
    /// Reads again what the window shows of the preferences.
    void preferencesChanged();
    /// Gives rows the layout and format that are chosen now; the row being made keeps its.
    void applyChoices(const QList<int> &rows);

    /// Asks when something is running, then ends the program.
    void quit();
    /// Ends it without a question; what is under way is stopped cleanly and stays in the
    /// list.
    void quitNow();

Q_SIGNALS:
    /// The user wants to see a video play. "Play" is offered once somebody connects and
    /// shows MainMenu::preview.
    void previewRequested(const SourceDico &source);
    /// A batch is over and the user wants to know: a headline, and how many sheets came to
    /// what.
    void batchFinished(const QString &title, const QString &counts);
    /// Nothing runs any more and the window is closed: the program may end. Once.
    void ended();

private:
    // What the user has chosen.
    int chosenLayout() const override;
    int chosenFormat() const override;
    QString destinationField() const override;
    void setDestinationField(const QString &path) override;
    QString chooseFolder(const QString &title, const QString &start) override;

    // The screen.
    void setProgressMaximum(ProgressBar bar, double maximum) override;
    void setProgressValue(ProgressBar bar, double value) override;
    void setActionText(RunnerKind kind, const QString &text) override;
    void setStepsText(const QString &text) override;
    void setStopVisible(RunnerKind kind, bool isVisible) override;
    void setDropArea(const QString &imageName, const QString &caption) override;
    void setGoEnabled(bool isEnabled) override;
    void setDrawerOpen(bool isOpen) override;
    void showSheetNotice(const QString &title, const QString &text) override;
    void sourceRefused(const QString &path, const QString &reason) override;
    void analysisEnded() override;
    void sheetFinished(const SheetOutcome &outcome) override;
    void batchEnded() override;
    void reveal(const QString &folder) override;

    void connectWindow();
    void connectMenu();
    void begin(const std::function<bool()> &start);
    bool canStart() const;
    void setGoAllowed(bool isAllowed);
    void updateCommands();
    void updateChoiceHint();
    void takeFiles(const QStringList &paths);
    void showOpenPanel();
    void showFolderPanel();
    void paste();
    void openDestination();
    void rememberDestination();
    void rowsChanged();
    void showRows();
    void tellOfFailures();

    SessionState state();
    void restore();
    void restoreWindow();
    void saveWindow();

    bool mayClose();
    void endWhenIdle();
    void retryEnding();

    appDelegate m_application;
    BatchModel m_model;
    MainWindow m_window;
    SavedBatch m_saved;
    HelpCommands *m_help;
    RunTally m_run;
    RunTally m_analysis;
    QTimer m_rowsTimer;
    QTimer m_endTimer;
    int m_endAttempts = 0;
    bool m_isGoAllowed = false;
    std::optional<RowsToMake> m_deferredGo;
    bool m_isEnding = false;
    bool m_hasEnded = false;
};

} // namespace vignar
