// A process that starts the logs as the programs do, writes what it is told, and stays
// until its standard input ends.
#include "classShared/lineLog.h"
#include "settings/logFiles.h"

#include <cstdio>
#include <string_view>

using namespace vignar;

int main(int, char **argv)
{
    const bool isDesktop = std::string_view(argv[1]) == "desktop";
    startLogs(isDesktop ? StandardStreams::redirect : StandardStreams::keep);
    if (isDesktop)
        redirectStdoutToFile(detailedLogPath());
    const QString line = QString::fromLocal8Bit(argv[2]);
    logLine(u"%@", line);
    summaryLogAppend(QLatin1Char('\n') + line);
    std::puts("printed");
    std::fflush(stdout);
    std::getchar();
    return 0;
}
