#include "classShared/lineLog.h"
#include "cli/commandLine.h"
#include "cli/commandSession.h"
#include "cli/terminalAlerts.h"
#include "settings/applicationPlaces.h"
#include "settings/logFiles.h"
#include "settings/preferenceFile.h"
#include "tasks/workFolder.h"

#include <QFileInfo>
#include <QGuiApplication>

#include <clocale>
#include <cstdio>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

QStringList argumentsAfterProgram(int argc, char **argv)
{
    QStringList arguments;
    for (int index = 1; index < argc; ++index)
        arguments.append(QString::fromLocal8Bit(argv[index]));
    return arguments;
}

void logQtMessage(QtMsgType, const QMessageLogContext &, const QString &message)
{
    logLine(u"%@", message);
}

void startOwnLogs(bool isVerbose)
{
    setApplicationPlaces(makeLinuxPlaces(u"cli"_s));
    startLogs(StandardStreams::keep);
    qInstallMessageHandler(logQtMessage);
    if (!isVerbose)
        return;
    setDebug(true);
    static LogSink toFile = setLogSink({});
    setLogSink([](const QString &line) {
        if (toFile)
            toFile(line);
        std::fputs(qPrintable(line + u'\n'), stderr);
    });
}

/// The user's preferences and the run's own, in memory: nothing is written back, so that
/// any number of command lines can run beside the desktop program.
void setUpPreferences(const CommandLine &line)
{
    const QString path =
        line.preferenceFile.isEmpty() ? defaultPreferenceFilePath() : line.preferenceFile;
    Dico values = readPreferenceFile(path, BrokenFile::leave);
    values.insert(line.settings);
    setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>(values));
}

int complain(const QString &fault)
{
    ProgressLine().print(u"vignar-cli: %1\nTry 'vignar-cli --help'."_s.arg(fault));
    return wrongArguments;
}

int runCommand(const CommandLine &line)
{
    setUpPreferences(line);
    if (!setUpWorkFolder(u"cli"_s)) {
        ProgressLine().print(u"vignar-cli: no folder for temporary files can be made"_s);
        return someFailed;
    }
    ProgressLine progress;
    setAlertPresenter(std::make_unique<TerminalAlerts>(progress));
    const int status = CommandSession(line, progress).run();
    setAlertPresenter({});
    removeWorkFolder();
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    const Result<CommandLine> line = parseCommandLine(argumentsAfterProgram(argc, argv));
    if (!line)
        return complain(line.reason());
    if (line->isVersion) {
        std::puts("vignar-cli " VIGNAR_VERSION);
        return allMade;
    }
    if (!line->preferenceFile.isEmpty() && !QFileInfo(line->preferenceFile).isReadable())
        return complain(u"the preferences '%1' cannot be read"_s.arg(line->preferenceFile));

    if (!line->isHelp)
        startOwnLogs(line->isVerbose);
    // Drawing text needs a GUI application, but no screen; the user's arguments are ours
    // alone to read.
    char platform[] = "-platform";
    char offscreen[] = "offscreen";
    char *ownArguments[] = {argv[0], platform, offscreen, nullptr};
    int ownCount = 3;
    QGuiApplication application(ownCount, ownArguments);
    std::setlocale(LC_NUMERIC, "C");
    QGuiApplication::setApplicationName(u"vignar-cli"_s);
    QGuiApplication::setQuitOnLastWindowClosed(false);

    if (line->isHelp) {
        printResult(helpText().trimmed());
        return allMade;
    }
    return runCommand(*line);
}
