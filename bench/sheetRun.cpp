// What one sheet costs this process itself, ffmpeg's share told apart: CPU seconds of the
// analysis and of the sheet, and the largest resident memory.
//
//   bench_sheetRun FOLDER      (clips are made there once and kept)

#include "app/appDelegate.h"
#include "settings/logFiles.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"
#include "support/recordingOutlets.h"
#include "tasks/workFolder.h"

#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <sys/resource.h>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

struct Cost {
    double own = 0;
    double children = 0;
    double wall = 0;
};

double cpuSeconds(int who)
{
    rusage usage{};
    getrusage(who, &usage);
    const auto seconds = [](const timeval &time) {
        return double(time.tv_sec) + 1e-6 * double(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Runs until the condition holds, and tells what that took.
template <class Start, class IsDone>
Cost measure(Start start, IsDone isDone)
{
    const Cost before{cpuSeconds(RUSAGE_SELF), cpuSeconds(RUSAGE_CHILDREN), 0};
    QElapsedTimer clock;
    clock.start();
    start();
    while (!isDone())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return {cpuSeconds(RUSAGE_SELF) - before.own, cpuSeconds(RUSAGE_CHILDREN) - before.children,
            1e-3 * double(clock.elapsed())};
}

double peakMebibytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0;
}

QString clip(const QString &folder)
{
    const QString path = folder + u"/ten-minutes-1080p.mp4"_s;
    if (!QFile::exists(path))
        QProcess::execute(u"ffmpeg"_s, {u"-loglevel"_s, u"error"_s, u"-f"_s, u"lavfi"_s, u"-i"_s,
                                        u"testsrc2=s=1920x1080:r=10:d=600"_s, u"-g"_s, u"50"_s,
                                        u"-preset"_s, u"ultrafast"_s, path});
    return path;
}

void print(const char *step, const char *layout, const Cost &cost)
{
    std::printf("%-9s %-4s own CPU %.3f s, ffmpeg %.2f s, wall %.2f s\n", step, layout, cost.own,
                cost.children, cost.wall);
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    if (argc < 2 || !setUpWorkFolder(u"bench"_s))
        return 2;
    startLogs(StandardStreams::keep);
    const QString source = clip(QString::fromLocal8Bit(argv[1]));
    constexpr const char *layouts[] = {"big", "med", "min", "mix"};
    for (int layout = bigLayout; layout <= mixLayout; ++layout) {
        QTemporaryDir destination;
        RecordingOutlets outlets;
        outlets.layout = layout;
        outlets.destination = destination.path();
        setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>());
        appDelegate batch(outlets);
        print("analysis", layouts[layout],
              measure([&] { batch.draggedFiles({source}); },
                      [&] { return outlets.analysisEnds > 0; }));
        print("sheet", layouts[layout],
              measure([&] { batch.iba_batchGoBt(); }, [&] { return outlets.batchEnds > 0; }));
        if (outlets.outcomes.size() != 1 ||
            outlets.outcomes[0].status != SheetOutcome::Status::made)
            return 1;
    }
    std::printf("largest resident memory: %.0f MiB\n", peakMebibytes());
    removeWorkFolder();
    return 0;
}
