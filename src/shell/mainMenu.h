#pragma once

#include <QObject>

class QAction;
class QMenu;
class QMenuBar;

namespace vignar
{

/// The commands of the main window, each made once and shown in the menu bar, some in the
/// context menu of a row too. Whoever carries a command out connects to its triggered().
class MainMenu : public QObject
{
    Q_OBJECT

public:
    /// Fills the menu bar, which owns the menus.
    explicit MainMenu(QMenuBar &bar);

    QAction *open;
    QAction *openFolder;
    QAction *paste;
    QMenu *recentDestinations;
    QAction *openDestination;
    QAction *quit;

    QAction *go;
    QAction *pause;
    QAction *stop;
    QAction *retryFailed;
    QAction *retryAll;

    QAction *preview;
    QAction *openSheet;
    QAction *showInFileManager;
    QAction *showLog;
    QAction *makeAgain;
    QAction *useChoices;
    QAction *remove;
    QAction *removeAll;

    QAction *showList;
    QAction *preferences;

    QAction *debugToggle;
    QAction *openDetailedLog;
    QAction *openSummaryLog;
    QAction *openTexts;
    QAction *report;
    QAction *about;

    /// The commands for the rows, a null one for a separator.
    QList<QAction *> rowActions() const;

    /// The folders, newest first; a chosen one is told.
    void setRecentDestinations(const QStringList &folders);

Q_SIGNALS:
    void destinationChosen(const QString &folder);

private:
    void fillFile(QMenuBar &bar);
    void fillBatch(QMenuBar &bar);
    void fillVideo(QMenuBar &bar);
    void fillView(QMenuBar &bar);
    void fillHelp(QMenuBar &bar);
};

} // namespace vignar
