// What composing a sheet costs: CPU seconds for pictures of 1280 × 960 pixels, and the
// largest resident memory of the process so far.
//
//   bench_composeSheet FOLDER      (pictures are made there once and kept)

#include "classShared/lineLog.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"
#include "sheet/extractionPasses.h"
#include "sheet/sheetComposer.h"

#include <QDir>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <sys/resource.h>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

constexpr int mostPictures = 64;

rusage usage()
{
    rusage now{};
    getrusage(RUSAGE_SELF, &now);
    return now;
}

double cpuSeconds()
{
    const rusage now = usage();
    const auto seconds = [](const timeval &time) {
        return double(time.tv_sec) + 1e-6 * double(time.tv_usec);
    };
    return seconds(now.ru_utime) + seconds(now.ru_stime);
}

/// Written as the passes write them, of something that is rich in detail.
QStringList pictures(const QString &folder)
{
    QStringList paths;
    for (int index = 0; index < mostPictures; ++index)
        paths.append(thumbnailPath(folder, index));
    if (!QFile::exists(paths.last()))
        QProcess::execute(u"ffmpeg"_s,
                          {u"-loglevel"_s, u"error"_s, u"-f"_s, u"lavfi"_s, u"-i"_s,
                           u"mandelbrot=s=1280x960:r=1"_s, u"-frames:v"_s,
                           QString::number(mostPictures), u"-q:v"_s, u"1"_s, u"-start_number"_s,
                           u"0"_s, u"-y"_s, folder + u"/img%02d.jpg"_s});
    return paths;
}

Dico display(int layout, const QStringList &paths, const QString &destination)
{
    Dico timecodes;
    for (int index = 0; index < paths.size(); ++index)
        timecodes.insert(QString::number(index), u"0:%1:00.00"_s.arg(index));
    return {{Keys::dstPathStr, destination},
            {Keys::bigMedMinMix, layout},
            {Keys::th, paths},
            {Keys::wTh, 1280},
            {Keys::hTh, 960},
            {Keys::bkgColor, u"000000"_s},
            {Keys::borderColor, u"ffffff"_s},
            {Keys::borderSize, 2},
            {Keys::name, u"A title"_s},
            {Keys::location, u"/videos"_s},
            {Keys::duration, u"1h04'00\""_s},
            {Keys::timecode, timecodes}};
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    QTemporaryDir destination;
    if (argc < 2 || !destination.isValid())
        return 2;
    setLogSink([](const QString &) {});
    setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>());
    const QString folder = QString::fromLocal8Bit(argv[1]) + u"/pictures"_s;
    QDir().mkpath(folder);
    const QStringList paths = pictures(folder);
    constexpr const char *layouts[] = {"big", "med", "min", "mix"};
    for (const int count : {24, mostPictures}) {
        for (const int layout : {minLayout, mixLayout, bigLayout}) {
            for (const SheetFormat format : {SheetFormat::jpeg, SheetFormat::pdf}) {
                const double before = cpuSeconds();
                if (!composeSheet(
                        display(layout, paths.mid(0, count), destination.filePath(u"a"_s)), format))
                    return 1;
                std::printf("compose  %d pictures %s %s CPU %.3f s, memory %.0f MiB\n", count,
                            layouts[layout], format == SheetFormat::pdf ? "PDF " : "JPEG",
                            cpuSeconds() - before, double(usage().ru_maxrss) / 1024.0);
            }
        }
    }
    return 0;
}
