#include "classShared/lineLog.h"
#include "settings/applicationPlaces.h"
#include "settings/logFiles.h"
#include "settings/preferenceFile.h"
#include "settings/stringTables.h"
#include "shell/alertBoxes.h"
#include "shell/desktopSession.h"
#include "shell/icons.h"
#include "shell/sessionPreferences.h"
#include "tasks/workFolder.h"

#include <QApplication>
#include <QDir>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <clocale>

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

/// Paths as the desktop or a shell hands them over; options are the toolkit's.
QStringList pathsOf(const QStringList &arguments)
{
    QStringList paths;
    for (const QString &argument : arguments.mid(1)) {
        if (!argument.startsWith(u'-'))
            paths.append(QDir::current().absoluteFilePath(argument));
    }
    return paths;
}

} // namespace

int main(int argc, char **argv)
{
    startLogs(StandardStreams::redirect);
    qInstallMessageHandler(logQtMessage);
    QApplication application(argc, argv);
    // The toolkit has adopted the user's locale; tools and parsers count with points.
    std::setlocale(LC_NUMERIC, "C");
    QApplication::setApplicationName(QString(bundleName));
    QApplication::setApplicationDisplayName(QString(bundleName));
    QApplication::setApplicationVersion(QStringLiteral(VIGNAR_VERSION));
    QApplication::setDesktopFileName(QString(bundleIdentifier));
    QApplication::setWindowIcon(applicationIcon());
    QApplication::setQuitOnLastWindowClosed(false);
    speakInterfaceLanguage(application);

    setSharedPreferenceStore(std::make_unique<SessionPreferences>(
        std::make_unique<FilePreferenceStore>(defaultPreferenceFilePath())));
    setAlertPresenter(std::make_unique<AlertBoxes>());
    if (!setUpWorkFolder(u"desktop"_s)) {
        alertTimed(localised(u"V_noWorkFolder"_s), QDir::tempPath(), {}, {}, {},
                   AlertStyle::critical, 0);
        return 1;
    }
    int status = 0;
    {
        DesktopSession session(applicationPlaces().stateFolder() + u"/batch"_s);
        setAlertPresenter(std::make_unique<AlertBoxes>(&session.window()));
        QObject::connect(&session, &DesktopSession::ended, &application, &QApplication::quit);
        session.start(pathsOf(QApplication::arguments()));
        status = QApplication::exec();
        setAlertPresenter({});
    }
    removeWorkFolder();
    return status;
}
