#pragma once

#include "cli/jobsSession.h"

namespace vignar
{

/// Exit statuses of the command line.
enum ExitStatus { allMade = 0, someFailed = 1, wrongArguments = 2 };

/// A command from its sources to its exit status. The jobs of the plan are the most that
/// may run at once; one of them runs in this process.
int runSources(const CommandLine &line, ProgressLine &progress, const JobsPlan &plan);

} // namespace vignar
