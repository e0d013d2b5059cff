#include "cli/commandRun.h"

#include "classShared/format.h"
#include "cli/commandSession.h"
#include "cli/sourceArguments.h"
#include "settings/stringTables.h"

#include <QDir>

#include <algorithm>

namespace vignar
{

using namespace Qt::StringLiterals;

using Command = CommandLine::Command;

namespace
{

void failAll(const CommandScreen &screen, const QStringList &sources, const QString &reason,
             Results &results)
{
    for (const QString &source : sources)
        results.finished(results.positionOf(source), screen.failure(source, reason));
}

/// False when it was interrupted.
bool work(const CommandScreen &screen, ProgressLine &progress, Results &results,
          const QStringList &sources, JobsPlan plan)
{
    plan.workers = std::min(plan.workers, int(sources.size()));
    if (plan.workers > 1 && screen.line().command != Command::plan)
        return JobsSession(screen, progress, results, sources, plan).run();
    return CommandSession(screen.line(), progress, results, sources).run();
}

} // namespace

int runSources(const CommandLine &line, ProgressLine &progress, const JobsPlan &plan)
{
    const SourceArguments arguments = expandSources(line.sources);
    const CommandScreen screen(line);
    Results results(line, progress, arguments.files);
    for (const RefusedArgument &refused : arguments.refused)
        results.refused(results.positionOf(refused.source), refused.source, refused.reason);
    results.unread(arguments.unread);
    bool isInterrupted = false;
    if (line.command == Command::sheet && screen.isDestinationMissing())
        failAll(screen, arguments.files,
                filled(localised(u"V_reason_destination"_s),
                       QDir::cleanPath(screen.destinationField())),
                results);
    else if (!arguments.files.isEmpty())
        isInterrupted = !work(screen, progress, results, arguments.files, plan);
    results.flush();
    if (isInterrupted)
        return interruptedStatus;
    return results.hasFailure() ? someFailed : allMade;
}

} // namespace vignar
