#include "app/signalWatcher.h"
#include "classShared/lineLog.h"
#include "classShared/standIns.h"
#include "settings/applicationPlaces.h"
#include "settings/logFiles.h"
#include "settings/preferenceFile.h"
#include "settings/stringTables.h"
#include "shell/alertBoxes.h"
#include "shell/desktopSession.h"
#include "shell/icons.h"
#include "shell/mainMenu.h"
#include "shell/platform/batchPresence.h"
#include "shell/platform/singleInstance.h"
#include "shell/platform/startupToken.h"
#include "shell/progressPanel.h"
#include "shell/sessionPreferences.h"
#include "shell/sideWindows.h"
#include "tasks/workFolder.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <clocale>
#include <csignal>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

void logQtMessage(QtMsgType, const QMessageLogContext &, const QString &message)
{
    logLine(u"%@", message);
}

/// The toolkit's own words (the file panel's, a button's "Close") in the language of ours,
/// and the direction in which it is read.
void speakInterfaceLanguage(QApplication &application)
{
    const QLocale locale(interfaceLanguage());
    auto *translator = new QTranslator(&application);
    if (translator->load(locale, u"qtbase"_s, u"_"_s,
                         QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(translator);
    if (locale.textDirection() == Qt::RightToLeft)
        QApplication::setLayoutDirection(Qt::RightToLeft);
}

/// Paths as the desktop or a shell hands them over, in their own bytes; options are the
/// toolkit's.
QStringList pathsOf(int argc, char **argv)
{
    QStringList paths;
    for (int index = 1; index < argc; ++index) {
        const QByteArray argument(argv[index]);
        if (const QString path = openablePath(argument);
            !argument.startsWith('-') && !path.isNull())
            paths.append(path);
    }
    return paths;
}

/// Starts of the program while it runs: their files come to the window, and it to the
/// front.
void serveLaterStarts(SingleInstance &instance, DesktopSession &session)
{
    QObject::connect(&instance, &SingleInstance::handedOver, &session,
                     [&session](const Handover &handover) {
                         raiseWindow(session.window(), handover.startupToken);
                         if (!handover.paths.isEmpty())
                             session.openFiles(handover.paths);
                     });
    QObject::connect(&session.window(), &MainWindow::closed, &instance, &SingleInstance::close);
}

/// Tells the desktop of the batch, and the window of what the user does about it there.
void connectPresence(BatchPresence &presence, DesktopSession &session)
{
    const ProgressPanel &progress = session.window().progress();
    QObject::connect(&progress, &ProgressPanel::changed, &session, [&] {
        presence.setState({progress.isRunning(), progress.isPaused(), progress.doneOfRun()});
    });
    QObject::connect(&session, &DesktopSession::batchFinished, &session,
                     [&](const QString &title, const QString &counts) {
                         presence.tellEnd({title, counts, localised(u"V_notice_open"_s)},
                                          session.window().isActiveWindow());
                     });
    EndNotifier &notifier = presence.notifier();
    QObject::connect(&session.window(), &MainWindow::activated, &notifier, &EndNotifier::withdraw);
    QObject::connect(&notifier, &EndNotifier::activated, &session,
                     [&](const QByteArray &token) { raiseWindow(session.window(), token); });
    QObject::connect(&notifier, &EndNotifier::folderRequested,
                     session.window().menu().openDestination, &QAction::trigger);
}

int runSession(SingleInstance &instance, const QStringList &paths)
{
    BatchPresence presence(makeDesktopServices());
    DesktopSession session(applicationPlaces().stateFolder() + u"/batch"_s);
    setAlertPresenter(std::make_unique<AlertBoxes>(&session.window()));
    serveLaterStarts(instance, session);
    connectPresence(presence, session);
    QObject::connect(&session, &DesktopSession::ended, qApp, &QApplication::quit);
    // The end of the desktop session asks no questions.
    const SideWindows sideWindows(session);
    const SignalWatcher signalWatcher;
    QObject::connect(&signalWatcher, &SignalWatcher::interrupted, &session,
                     &DesktopSession::quitNow);
    session.start(paths);
    const int status = QApplication::exec();
    setAlertPresenter({});
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    // A write past the user's limit of file sizes is to fail and be reported, not to kill us.
    std::signal(SIGXFSZ, SIG_IGN);
    const QByteArray startupToken = startupTokenFromEnvironment();
    QApplication application(argc, argv);
    // The toolkit has adopted the user's locale; tools and parsers count with points.
    std::setlocale(LC_NUMERIC, "C");
    QApplication::setApplicationName(QString(bundleName));
    QApplication::setApplicationDisplayName(QString(bundleName));
    QApplication::setApplicationVersion(QStringLiteral(VIGNAR_VERSION));
    QApplication::setDesktopFileName(QString(bundleIdentifier));
    setStandInFolder(applicationPlaces().stateFolder() + u"/names"_s);
    const QStringList paths = pathsOf(argc, argv);
    SingleInstance instance{QString(bundleIdentifier)};
    const auto role = instance.claim({paths, startupToken});
    if (role == SingleInstance::Role::later)
        return 0;

    // The logs, preferences and work folder are those of the one that runs.
    QApplication::setWindowIcon(applicationIcon());
    QApplication::setQuitOnLastWindowClosed(false);
    speakInterfaceLanguage(application);
    if (role == SingleInstance::Role::unanswered) {
        AlertBoxes().present({localised(u"D_appAlreadyOpened_1"_s),
                              localised(u"D_appAlreadyOpened_2"_s),
                              localised(u"D_appAlreadyOpened_3"_s)});
        return 1;
    }
    startLogs(StandardStreams::redirect);
    qInstallMessageHandler(logQtMessage);

    setSharedPreferenceStore(std::make_unique<SessionPreferences>(
        std::make_unique<FilePreferenceStore>(defaultPreferenceFilePath())));
    setAlertPresenter(std::make_unique<AlertBoxes>());
    if (!setUpWorkFolder(u"desktop"_s)) {
        alertTimed(localised(u"V_noWorkFolder"_s), QDir::tempPath(), {}, {}, {},
                   AlertStyle::critical, 0);
        return 1;
    }
    const int status = runSession(instance, paths);
    removeWorkFolder();
    return status;
}
