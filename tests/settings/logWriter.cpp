// A process that starts the logs as the programs do, writes what it is told, and stays
// until its standard input ends.
#include "classShared/lineLog.h"
#include "settings/logFiles.h"

#include <QCoreApplication>

#include <cstdio>
#include <iostream>

using namespace vignar;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    const bool isDesktop = arguments.value(1) == QLatin1String("desktop");
    startLogs(isDesktop ? StandardStreams::redirect : StandardStreams::keep);
    if (isDesktop)
        redirectStdoutToFile(detailedLogPath());
    logLine(u"%@", arguments.value(2));
    summaryLogAppend(QLatin1Char('\n') + arguments.value(2));
    std::puts("printed");
    std::fflush(stdout);
    std::cin.get();
    return 0;
}
