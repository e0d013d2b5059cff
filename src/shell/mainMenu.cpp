#include "shell/mainMenu.h"

#include "settings/stringTables.h"
#include "shell/icons.h"

#include <QAction>
#include <QDir>
#include <QMenu>
#include <QMenuBar>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

QAction *add(QMenu &menu, const QString &words, const QString &icon = {},
             const QKeySequence &shortcut = {})
{
    auto *action = menu.addAction(words);
    if (!icon.isEmpty())
        action->setIcon(themedIcon(icon));
    action->setShortcut(shortcut);
    return action;
}

/// Folders below the home folder the short way, "&" as itself.
QString menuText(const QString &folder)
{
    const QString home = QDir::homePath() + u'/';
    QString text = folder.startsWith(home) ? u"~/"_s + folder.mid(home.size()) : folder;
    return text.replace(u'&', u"&&"_s);
}

} // namespace

MainMenu::MainMenu(QMenuBar &bar) : QObject(&bar)
{
    fillFile(bar);
    fillBatch(bar);
    fillVideo(bar);
    fillView(bar);
    fillHelp(bar);
}

void MainMenu::fillFile(QMenuBar &bar)
{
    QMenu &menu = *bar.addMenu(localised(u"V_menu_file"_s));
    open = add(menu, localised(u"V_menu_open"_s), u"document-open"_s, QKeySequence::Open);
    openFolder = add(menu, localised(u"V_menu_openFolder"_s), u"folder-open"_s,
                     Qt::CTRL | Qt::SHIFT | Qt::Key_O);
    paste = add(menu, localised(u"V_menu_paste"_s), u"edit-paste"_s, QKeySequence::Paste);
    menu.addSeparator();
    recentDestinations = menu.addMenu(localised(u"V_menu_recent"_s));
    openDestination =
        add(menu, localised(u"V_menu_openDestination"_s), u"folder-visit"_s, Qt::CTRL | Qt::Key_D);
    menu.addSeparator();
    preferences =
        add(menu, localised(u"V_menu_preferences"_s), u"configure"_s, QKeySequence::Preferences);
    preferences->setMenuRole(QAction::PreferencesRole);
    if (preferences->shortcut().isEmpty())
        preferences->setShortcut(Qt::CTRL | Qt::Key_Comma);
    menu.addSeparator();
    quit = add(menu, localised(u"V_menu_quit"_s), u"application-exit"_s, Qt::CTRL | Qt::Key_Q);
    quit->setMenuRole(QAction::QuitRole);
}

void MainMenu::fillBatch(QMenuBar &bar)
{
    QMenu &menu = *bar.addMenu(localised(u"V_menu_batch"_s));
    go = add(menu, localised(u"V_go"_s), u"media-playback-start"_s, Qt::CTRL | Qt::Key_Return);
    pause = add(menu, localised(u"V_pause"_s), u"media-playback-pause"_s, Qt::CTRL | Qt::Key_P);
    pause->setCheckable(true);
    stop = add(menu, localised(u"V_stop"_s), u"media-playback-stop"_s, Qt::CTRL | Qt::Key_Period);
    menu.addSeparator();
    retryFailed = add(menu, localised(u"V_menu_retryFailed"_s), u"view-refresh"_s, Qt::Key_F5);
    retryAll = add(menu, localised(u"V_menu_retryAll"_s));
}

void MainMenu::fillVideo(QMenuBar &bar)
{
    QMenu &menu = *bar.addMenu(localised(u"V_menu_video"_s));
    preview = add(menu, localised(u"V_menu_preview"_s), u"media-playback-start"_s);
    openSheet =
        add(menu, localised(u"V_menu_openSheet"_s), u"image-x-generic"_s, Qt::CTRL | Qt::Key_E);
    showInFileManager =
        add(menu, localised(u"V_menu_show"_s), u"folder-visit"_s, Qt::CTRL | Qt::Key_R);
    showLog = add(menu, localised(u"V_menu_showLog"_s), u"text-x-generic"_s);
    menu.addSeparator();
    makeAgain = add(menu, localised(u"V_menu_makeAgain"_s), u"view-refresh"_s,
                    Qt::CTRL | Qt::SHIFT | Qt::Key_Return);
    useChoices = add(menu, localised(u"V_menu_useChoices"_s));
    menu.addSeparator();
    remove = add(menu, localised(u"V_menu_remove"_s), u"list-remove"_s, QKeySequence::Delete);
    removeAll = add(menu, localised(u"V_menu_removeAll"_s), u"edit-clear-all"_s);
    // Shown by whoever can play a video.
    preview->setVisible(false);
}

void MainMenu::fillView(QMenuBar &bar)
{
    QMenu &menu = *bar.addMenu(localised(u"V_menu_view"_s));
    showList = add(menu, localised(u"V_menu_showList"_s), {}, Qt::Key_F9);
    showList->setCheckable(true);
}

void MainMenu::fillHelp(QMenuBar &bar)
{
    QMenu &menu = *bar.addMenu(localised(u"V_menu_help"_s));
    debugToggle = add(menu, localised(u"menuDebug1"_s));
    debugToggle->setCheckable(true);
    openDetailedLog = add(menu, localised(u"V_menu_detailedLog"_s), u"text-x-generic"_s);
    openSummaryLog = add(menu, localised(u"V_menu_summaryLog"_s), u"text-x-generic"_s);
    menu.addSeparator();
    openTexts = add(menu, localised(u"V_menu_texts"_s));
    report = add(menu, localised(u"V_menu_report"_s));
    menu.addSeparator();
    about = add(menu, localised(u"V_menu_about"_s), u"help-about"_s);
    about->setMenuRole(QAction::AboutRole);
}

QList<QAction *> MainMenu::rowActions() const
{
    return {preview,     openSheet, showInFileManager, showLog, nullptr, makeAgain,
            retryFailed, retryAll,  useChoices,        nullptr, remove,  removeAll};
}

void MainMenu::setRecentDestinations(const QStringList &folders)
{
    recentDestinations->clear();
    for (const QString &folder : folders) {
        const QAction *action = recentDestinations->addAction(menuText(folder));
        connect(action, &QAction::triggered, this,
                [this, folder] { Q_EMIT destinationChosen(folder); });
    }
    recentDestinations->setEnabled(!folders.isEmpty());
}

} // namespace vignar
