#include "tasks/blockingRuns.h"

#include "classShared/files.h"
#include "classShared/lineLog.h"
#include "tasks/argumentStages.h"
#include "tasks/childProcess.h"
#include "tasks/shellQuoting.h"
#include "tasks/toolPlaces.h"
#include "tasks/waitedRun.h"
#include "tasks/workFolder.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QThread>

#include <algorithm>
#include <csignal>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

/// What a tool leaves that had nothing to say.
bool isBlank(const QString &text)
{
    static const QStringList blanks{u""_s, u" "_s, u"\n"_s, u" \n"_s};
    return blanks.contains(text);
}

QString withoutLineEnd(const QString &text)
{
    return text.endsWith(u'\n') ? text.chopped(1) : text;
}

QVariant loggable(const QList<QStringList> &stages)
{
    return QVariantList(stages.cbegin(), stages.cend());
}

/// The tool that is named by a stage but is no file; null when all are there.
QString missingTool(const QList<QStringList> &stages)
{
    const auto isMissing = [](const QStringList &stage) {
        return !QFileInfo(stage.value(0)).isFile();
    };
    const auto found = std::ranges::find_if(stages, isMissing);
    return found == stages.cend() ? QString() : found->value(0, u""_s);
}

/// Absolute paths, because a bare name would be searched for in $PATH.
void makeToolsAbsolute(QList<QStringList> &stages)
{
    for (QStringList &stage : stages)
        stage.first() = QFileInfo(stage.constFirst()).absoluteFilePath();
}

void logRun(const QList<QStringList> &stages)
{
    for (const QStringList &stage : stages)
        logDebug(u"taskArray           : ma %@", QVariant(stage));
    if constexpr (isVerbose()) {
        logVerbose(u"env pre             : %@",
                   QVariant(QProcessEnvironment::systemEnvironment().toStringList()));
        logVerbose(u"env post            : %@", QVariant(toolEnvironment().toStringList()));
    }
}

QString linkFolder()
{
    return workFolder() + "/taskWithStr"_L1;
}

/// A copy of the tools in the work folder stands in for the program's own.
QString withToolsOfWorkFolder(const QString &command)
{
    const QString app = workFolder() + "/app.app"_L1;
    if (!QFileInfo(app).isDir())
        return command;
    return QString(command).replace(toolsFolder(), app + "/Contents/Resources/tools"_L1);
}

QString existingFolder(const QString &folder)
{
    if (folder.isEmpty() || !QFileInfo(folder).isDir())
        return {};
    logLine(u"cd : %@", folder);
    return folder;
}

QString runShellText(const QString &command, const QString &folder)
{
    logDebug(u"taskWithStr > args  : %@", command);
    ReportBuffer report;
    const WaitedRun run{.stages = {{u"/bin/sh"_s, u"-c"_s, withToolsOfWorkFolder(command)}},
                        .channels = QProcess::ForwardedErrorChannel,
                        .folder = existingFolder(folder)};
    runAndWait(run, [&report](const QByteArray &chunk) { report.append(chunk); });
    rmCocoa(linkFolder());
    QString text = withoutLineEnd(decodedReport(report.bytes()));
    if (!text.isEmpty())
        return text;
    logLine(u"str                 :-/ '%@'", text);
    return {};
}

/// A shell that nobody waits for; with its owner it ends, and what it started with it.
class ShellProcess : public QProcess
{
public:
    using QProcess::QProcess;
    ~ShellProcess() override
    {
        signalChild(*this, SIGKILL);
        waitForFinished();
    }
};

/// Joins a thread that may never have been started.
bool startAndJoin(QThread &thread)
{
    thread.start();
    if (!thread.isRunning() && !thread.isFinished()) {
        std::perror("pthread_create failed");
        return false;
    }
    if (!thread.wait()) {
        std::perror("pthread_join failed");
        return false;
    }
    return true;
}

} // namespace

RunAnswer taskArrayRun(const QStringList &arguments, std::chrono::milliseconds limit,
                       const RunLimits &limits)
{
    logLine(u"taskArray           - begin");
    auto stages = splitStages(arguments);
    if (!stages || !QFileInfo::exists(stages->constFirst().value(0)))
        return {};
    logDebug(u"separatedArgsByTask…: %@", loggable(*stages));
    if (const QString tool = missingTool(*stages); !tool.isNull()) {
        logLine(u"taskArray      :-( tool !present '%@'", tool);
        return {};
    }
    makeToolsAbsolute(*stages);
    logRun(*stages);

    ReportBuffer report;
    const auto collect = [&report](const QByteArray &chunk) { report.append(chunk); };
    const WaitedEnd end =
        runAndWait({.stages = *stages, .limit = limit, .limits = limits}, collect);
    if (end.how == WaitedEnd::How::killedAtLimit)
        return {{}, RunFault::tookTooLong};
    if (!end)
        return {};
    const QString text = decodedReport(report.bytes());
    return {isBlank(text) ? QString() : text, faultOf(end.status, text)};
}

QString taskArrayWithin(const QStringList &arguments, std::chrono::milliseconds limit)
{
    return taskArrayRun(arguments, limit).text;
}

QString taskArray(const QStringList &arguments)
{
    return taskArrayWithin(arguments, std::chrono::milliseconds(blockingRunLimitMs));
}

void taskShell(const QString &command)
{
    logVerbose(u"argsStr : %@", command);
    auto *process = new ShellProcess(QCoreApplication::instance());
    prepareChild(*process);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LC_CTYPE"_s, u"en_US.UTF-8"_s);
    process->setProcessEnvironment(environment);
    process->setProcessChannelMode(QProcess::ForwardedChannels);
    QObject::connect(process, &QProcess::finished, process, &QObject::deleteLater);
    QObject::connect(process, &QProcess::errorOccurred, process, &QObject::deleteLater);
    process->start(u"/bin/sh"_s, {u"-c"_s, command});
}

QString taskWithStr(const QString &command, const QString &folder)
{
    rmCocoa(linkFolder());
    return runShellText(command, folder);
}

QString taskWithStr(const QStringList &items, const QString &folder)
{
    rmCocoa(linkFolder());
    return runShellText(shellCommand(items, linkFolder()), folder);
}

QString taskBloquante::verbose(const QStringList &pieces)
{
    logDebug(u"verboseStr argsArray : %@", QVariant(pieces));
    const QStringList arguments = QStringList(u"-c"_s) + pieces;
    ReportBuffer report;
    const std::unique_ptr<QThread> worker(QThread::create([&arguments, &report] {
        logLine(u"taskArgs : %@", QVariant(arguments));
        // A chunk counts as a C text: a zero byte ends it.
        runAndWait({.stages = {QStringList(u"/bin/sh"_s) + arguments}},
                   [&report](const QByteArray &chunk) { report.append(chunk.constData()); });
        logLine(u"taskBloquante       : task release");
        logLine(u"taskBloquante       : outPipe release");
    }));
    if (!startAndJoin(*worker))
        return {};
    const QString text = decodedReport(report.bytes());
    logDebug(u"verbose (pre)       : %@", text);
    QString final = text.isNull() ? u""_s : withoutLineEnd(text);
    logDebug(u"verbose final       : %@", final);
    return final;
}

} // namespace vignar
