#include "classShared/lineLog.h"
#include "classShared/standIns.h"
#include "cli/argumentBytes.h"
#include "cli/commandLine.h"
#include "cli/commandRun.h"
#include "cli/results.h"
#include "cli/terminal.h"
#include "cli/terminalAlerts.h"
#include "cli/worker.h"
#include "settings/applicationPlaces.h"
#include "settings/logFiles.h"
#include "settings/preferenceFile.h"
#include "tasks/workFolder.h"

#include <QFile>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QThread>

#include <algorithm>
#include <clocale>
#include <csignal>
#include <cstdio>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

QStringList argumentsAfterProgram(int argc, char **argv)
{
    QStringList arguments;
    for (int index = 1; index < argc; ++index)
        arguments.append(argumentText(argv[index]));
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

/// Outside a desktop session the toolkit makes a runtime folder of its own among the
/// temporary files and leaves it there. It is lent the work folder, which goes away, that of a
/// run that was killed included.
void lendRuntimeFolder()
{
    constexpr const char *variable = "XDG_RUNTIME_DIR";
    if (qEnvironmentVariableIsEmpty(variable))
        qputenv(variable, QFile::encodeName(workFolder()));
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

/// A file that the user names must be one; his own may be missing or broken.
bool holdsPreferences(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && QJsonDocument::fromJson(file.readAll()).isObject();
}

/// Prints what was asked for instead of any work.
int answer(const QString &text)
{
    const Result<void> printed = printResult(text);
    if (!printed)
        ProgressLine().print(lostResults(printed.reason()));
    return printed ? allMade : someFailed;
}

int complain(const QString &fault)
{
    ProgressLine().print(u"vignar-cli: %1"_s.arg(fault));
    ProgressLine().print(u"Try 'vignar-cli --help'."_s);
    return wrongArguments;
}

/// One after another costs nothing but time; a process for each source at once costs memory,
/// and gains little where one source's own tools keep the cores busy.
int usualJobs()
{
    return std::max(1, QThread::idealThreadCount() / 2);
}

/// A worker's folder goes with that of the process that has started it.
bool enterWorkFolder(const CommandLine &line)
{
    if (line.workerFolder.isEmpty())
        return setUpWorkFolder(u"cli"_s);
    setWorkFolder(line.workerFolder);
    return true;
}

int runCommand(const CommandLine &line, const QStringList &typed)
{
    setUpPreferences(line);
    if (!line.workerFolder.isEmpty())
        return Worker(line).run();
    ProgressLine progress;
    for (const QString &note : line.notes)
        progress.print(u"vignar-cli: %1"_s.arg(note));
    setAlertPresenter(std::make_unique<TerminalAlerts>(progress));
    const int status = runSources(line, progress, {line.jobs.value_or(usualJobs()), typed});
    setAlertPresenter({});
    return status;
}

/// Drawing text needs a GUI application, but no screen; the user's arguments are ours alone to
/// read.
int runApplication(char *program, const CommandLine &line, const QStringList &typed)
{
    char platform[] = "-platform";
    char offscreen[] = "offscreen";
    char *ownArguments[] = {program, platform, offscreen, nullptr};
    int ownCount = 3;
    // What the toolkit has to say of the session that it finds goes to no user.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    QGuiApplication application(ownCount, ownArguments);
    std::setlocale(LC_NUMERIC, "C");
    QGuiApplication::setApplicationName(u"vignar-cli"_s);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    qInstallMessageHandler(logQtMessage);
    return runCommand(line, typed);
}

} // namespace

int main(int argc, char **argv)
{
    // Whoever reads the results may leave early; the sheets are still wanted, and so is
    // the cleaning up behind them.
    std::signal(SIGPIPE, SIG_IGN);
    // A write past the user's limit of file sizes is to fail and be reported, not to kill us.
    std::signal(SIGXFSZ, SIG_IGN);
    replaceClosedStreams();
    const QStringList typed = argumentsAfterProgram(argc, argv);
    const Result<CommandLine> line = parseCommandLine(typed);
    if (!line)
        return complain(line.reason());
    if (line->isVersion)
        return answer(QStringLiteral("vignar-cli " VIGNAR_VERSION));
    if (!line->preferenceFile.isEmpty() && !holdsPreferences(line->preferenceFile))
        return complain(u"the preferences '%1' cannot be read"_s.arg(line->preferenceFile));

    if (line->isHelp) {
        QCoreApplication application(argc, argv);
        QCoreApplication::setApplicationName(u"vignar-cli"_s);
        return answer(helpText().trimmed());
    }
    startOwnLogs(line->isVerbose);
    if (!enterWorkFolder(*line)) {
        ProgressLine().print(u"vignar-cli: no folder for temporary files can be made"_s);
        return someFailed;
    }
    lendRuntimeFolder();
    setStandInFolder(workFolder() + u"/names"_s);
    const int status = runApplication(argv[0], *line, typed);
    removeWorkFolder();
    return status;
}
