// How long the window keeps its user waiting while a folder of 500 videos is dropped on it,
// while 40 of their sheets are made, and at the next start: the delays of a timer of 5 ms, the
// events that took longest, and the largest resident memory.
//
//   bench_desktopLatency FOLDER      (clips are made there once and kept)

#include "heart.h"

#include "app/batchList.h"
#include "settings/alerts.h"
#include "settings/logFiles.h"
#include "settings/preferenceFile.h"
#include "settings/preferences.h"
#include "shell/batchDrawer.h"
#include "shell/desktopSession.h"
#include "shell/dropArea.h"
#include "shell/sessionPreferences.h"
#include "shell/sideWindows.h"
#include "support/makeClip.h"
#include "support/urlSink.h"
#include "tasks/workFolder.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QMetaEnum>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <sys/resource.h>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

constexpr int sourceCount = 500;
constexpr int clipCount = 10;
constexpr int sheetCount = 40;
constexpr size_t shownEvents = 6;

/// Keeps the longest time that each kind of event took.
class TimedApplication : public QApplication
{
public:
    using QApplication::QApplication;

    bool notify(QObject *receiver, QEvent *event) override
    {
        const QByteArray name = QByteArray(receiver->metaObject()->className()) + ' ' +
                                QMetaEnum::fromType<QEvent::Type>().valueToKey(event->type());
        QElapsedTimer clock;
        clock.start();
        const bool isTaken = QApplication::notify(receiver, event);
        double &longest = slowest[name];
        longest = std::max(longest, 1e-6 * double(clock.nsecsElapsed()));
        return isTaken;
    }

    std::map<QByteArray, double> slowest;
};

double peakMebibytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0;
}

/// 500 names of ten clips, as a holiday's folder would hold.
QString makeSources(const QString &folder)
{
    const QString sources = folder + u"/desktop-500"_s;
    if (QDir(sources).exists())
        return sources;
    const QString unfinished = sources + u".part"_s;
    QDir().mkpath(unfinished);
    for (int number = 0; number < sourceCount; ++number) {
        const QString original = folder + u"/desktop-clip-%1.mp4"_s.arg(number % clipCount);
        if (number < clipCount)
            makeClip(original, u"testsrc2=s=640x360:r=25:d=%1"_s.arg(8 + number),
                     {u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=d=8"_s, u"-g"_s, u"50"_s});
        const QString name = u"/Clip %1, from the camera.mp4"_s.arg(number, 3, 10, QChar(u'0'));
        std::filesystem::create_hard_link(original.toStdString(),
                                          (unfinished + name).toStdString());
    }
    QFile::rename(unfinished, sources);
    return sources;
}

/// Runs until the condition holds and prints a line of the table.
template <class Start, class IsDone>
void measure(const char *what, Start start, IsDone isDone)
{
    auto &slowest = static_cast<TimedApplication *>(qApp)->slowest;
    slowest.clear();
    Heart heart;
    QElapsedTimer clock;
    clock.start();
    start();
    while (!isDone() || heart.beats() == 0)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    const double seconds = 1e-3 * double(clock.elapsed());
    const QList<double> delays = heart.sortedDelays();
    std::printf("%-22s %8.1f s %8.1f ms %8.1f ms %6.0f MiB\n", what, seconds,
                delays[delays.size() * 99 / 100], delays.last(), peakMebibytes());
    std::vector<std::pair<double, QByteArray>> events;
    for (const auto &[name, longest] : slowest)
        events.emplace_back(longest, name);
    std::sort(events.rbegin(), events.rend());
    events.resize(std::min(events.size(), shownEvents));
    for (const auto &[longest, name] : events)
        std::printf("    %7.1f ms  %s\n", longest, name.constData());
}

/// All other rows count as made.
void goForFew(DesktopSession &session)
{
    BatchList &batch = session.application().whichArrayController();
    for (int row = sheetCount; row < batch.count(); ++row)
        batch.setResultat(row, Puces::puceSuccess);
    session.go(RowsToMake::unmade);
}

void run(DesktopSession &session, const QString &sources)
{
    const SideWindows sideWindows(session);
    session.start();
    std::printf("%-22s %10s %11s %11s %10s\n", "", "in all", "99 % below", "longest", "memory");
    const auto isLookedAt = [&] {
        return session.model().rowCount() == sourceCount && !session.window().dropArea().isBusy();
    };
    measure(
        "500 videos dropped", [&] { Q_EMIT session.window().dropped({sources}); }, isLookedAt);
    session.window().drawer().selectRows({0});
    measure(
        "40 sheets of them made", [&] { goForFew(session); }, [&] { return !session.isRunning(); });
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    TimedApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    if (argc < 2 || !setUpWorkFolder(u"bench"_s))
        return 2;
    startLogs(StandardStreams::keep);
    const QString sources = makeSources(QString::fromLocal8Bit(argv[1]));
    QTemporaryDir folder;
    setSharedPreferenceStore(std::make_unique<SessionPreferences>(
        std::make_unique<FilePreferenceStore>(folder.filePath(u"preferences.json"_s))));
    prefWrite(Prefs::prefDefautDstPathStr, folder.path());
    UrlSink desktop;
    const QString state = folder.filePath(u"state"_s);
    {
        DesktopSession session(state);
        run(session, sources);
        session.quitNow();
    }
    DesktopSession session(state);
    measure(
        "next start with 500", [&] { session.start(); },
        [&] { return session.model().rowCount() == sourceCount; });
    removeWorkFolder();
    return 0;
}
