#include "shell/helpCommands.h"

#include "classShared/format.h"
#include "classShared/lineLog.h"
#include "settings/alerts.h"
#include "settings/applicationPlaces.h"
#include "settings/logFiles.h"
#include "settings/stringTables.h"
#include "shell/fileManager.h"
#include "shell/icons.h"
#include "shell/mainMenu.h"
#include "shell/mainWindow.h"
#include "shell/platform/reportDialog.h"
#include "tasks/blockingRuns.h"
#include "tasks/toolPlaces.h"

#include <QAction>
#include <QApplication>
#include <QDate>
#include <QLocale>
#include <QMessageBox>
#include <QSysInfo>

namespace vignar
{

using namespace Qt::StringLiterals;

QString ffmpegVersion()
{
    const QString tool = ffmpegPath();
    if (tool.isEmpty())
        return {};
    // "ffmpeg version 5.1.6-0+deb12u1 Copyright (c) …"
    const QString line = taskArray({tool, u"-version"_s}).section(u'\n', 0, 0);
    return line.startsWith("ffmpeg version "_L1) ? u"ffmpeg "_s + line.section(u' ', 2, 2)
                                                 : QString();
}

QString releaseText()
{
    const QDate day = QDate::fromString(QStringLiteral(VIGNAR_RELEASE_DATE), Qt::ISODate);
    return filled(localised(u"V_about_release"_s), QStringLiteral(VIGNAR_VERSION),
                  QLocale(interfaceLanguage()).toString(day, u"d MMMM yyyy"_s));
}

HelpCommands::HelpCommands(MainWindow &window, QObject *parent) : QObject(parent), m_window(window)
{
    MainMenu &menu = window.menu();
    connect(menu.debugToggle, &QAction::triggered, this, &HelpCommands::iba_menuDebugToggle);
    connect(menu.openDetailedLog, &QAction::triggered, this,
            [this] { iba_OpenFile(detailedLogPath()); });
    connect(menu.openSummaryLog, &QAction::triggered, this,
            [this] { iba_OpenFile(summaryLogPath()); });
    connect(menu.openTexts, &QAction::triggered, this, &HelpCommands::iba_openLocalizationFile);
    connect(menu.report, &QAction::triggered, this, &HelpCommands::report);
    connect(menu.about, &QAction::triggered, this, &HelpCommands::showAbout);
}

void HelpCommands::iba_menuDebugToggle()
{
    QAction &item = *m_window.menu().debugToggle;
    logLine(u"a_menuDebugToggle   …");
    logLine(u"a_menuDebugToggle   : %@", item.text());
    const bool isOn = !isDebug();
    item.setText(localised(isOn ? u"menuDebug0"_s : u"menuDebug1"_s));
    item.setChecked(isOn);
    setDebug(isOn);
    logLine(u"menuDebug           : %d", isOn);
}

void HelpCommands::iba_OpenFile(const QString &path)
{
    logDebug(u"iba_OpenFile        : %@", path);
    openFile(path);
}

void HelpCommands::iba_openLocalizationFile()
{
    const QString path = ownLocalizationFile();
    const QString title = localised(u"localizationToOpen"_s);
    if (path.isNull()) {
        alertTimed(title,
                   filled(localised(u"V_texts_noCopy"_s), applicationPlaces().supportFolder()), {},
                   {}, {}, AlertStyle::warning, 0);
        return;
    }
    showInFileManager(path, this, [path](bool isShown) {
        logLine(u"revealFolderInFinder? %d (%@)", isShown, path);
    });
    alertTimed(title, filled(localised(u"localizationOpened"_s), path), {}, {}, {},
               AlertStyle::informational, 0);
}

QStringList HelpCommands::versions() const
{
    QStringList lines{u"Qt "_s + QString::fromLatin1(qVersion())};
    if (const QString version = ffmpegVersion(); !version.isNull())
        lines << version;
    for (const auto &component : m_components) {
        if (const QString version = component(); !version.isEmpty())
            lines << version;
    }
    return lines;
}

void HelpCommands::report()
{
    QStringList lines = versions();
    lines.prepend(QGuiApplication::applicationDisplayName() + u' ' +
                  QCoreApplication::applicationVersion());
    lines << QSysInfo::prettyProductName() + u", "_s + QSysInfo::currentCpuArchitecture() +
                 u", "_s + QGuiApplication::platformName();
    auto *dialog = new ReportDialog(lines, &m_window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

void HelpCommands::showAbout()
{
    auto *box = new QMessageBox(&m_window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle(localised(u"V_menu_about"_s).remove(u'&'));
    box->setTextFormat(Qt::PlainText);
    box->setIconPixmap(applicationIcon().pixmap(64));
    box->setText(QGuiApplication::applicationDisplayName());
    box->setInformativeText(QStringList{localised(u"V_about_purpose"_s), releaseText(),
                                        localised(u"V_about_contacts"_s), versions().join(u'\n')}
                                .join(u"\n\n"_s));
    box->setStandardButtons(QMessageBox::Close);
    box->setWindowModality(Qt::WindowModal);
    box->open();
}

} // namespace vignar
