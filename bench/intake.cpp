// How long a folder of 200,000 files takes to be taken in by the window, and how long the window
// then keeps its user waiting at most, until the sources are queued and while the first of them
// are analysed.
//
//   bench_intake FOLDER      (empty files are made there once and kept)

#include "heart.h"

#include "settings/logFiles.h"
#include "settings/preferenceFile.h"
#include "settings/preferences.h"
#include "shell/desktopSession.h"
#include "shell/sessionPreferences.h"
#include "tasks/workFolder.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

constexpr int fileCount = 200000;
constexpr int folderCount = 200;
/// Sources that are analysed while the window is watched.
constexpr int analysedCount = 20;

/// Numbered files in numbered folders, the last one a video, the others of an extension.
QString makeFiles(const QString &folder, const QString &extension)
{
    const QString made = folder + u"/intake-"_s + extension;
    if (QDir(made).exists())
        return made;
    const QString unfinished = made + u".part"_s;
    for (int number = 0; number < fileCount; ++number) {
        const QString sub = u"%1/Holiday %2/"_s.arg(unfinished).arg(number % folderCount);
        if (number < folderCount)
            QDir().mkpath(sub);
        const bool isLast = number == fileCount - 1;
        QFile file(u"%1IMG_%2.%3"_s.arg(sub).arg(number).arg(isLast ? u"mp4"_s : extension));
        if (!file.open(QIODevice::WriteOnly))
            return {};
    }
    QFile::rename(unfinished, made);
    return made;
}

template <class IsDone>
double waitUntil(IsDone isDone)
{
    Heart heart;
    while (!isDone())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    // The beat that follows tells of the event before it.
    for (const qsizetype before = heart.beats(); heart.beats() == before;)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return heart.sortedDelays().constLast();
}

void measure(const char *what, const QString &folder, const QString &state)
{
    DesktopSession session(state);
    session.start();
    appDelegate &application = session.application();
    waitUntil([] { return true; });
    QElapsedTimer clock;
    clock.start();
    Q_EMIT session.window().dropped({folder});
    const double queueing =
        waitUntil([&] { return !application.analysisDriver().sourceAtHand().isNull(); });
    const double seconds = 1e-3 * double(clock.elapsed());
    QSet<QString> analysed;
    const double analysing = waitUntil([&] {
        analysed.insert(application.analysisDriver().sourceAtHand());
        return !application.isTakingSources() || analysed.size() > analysedCount;
    });
    std::printf("%-28s %7.2f s %9.1f ms %9.1f ms\n", what, seconds, queueing, analysing);
    application.iba_taskStopBt(RunnerKind::analysis);
    waitUntil([&] { return !application.isTakingSources(); });
    session.quitNow();
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    if (argc < 2 || !setUpWorkFolder(u"bench"_s))
        return 2;
    startLogs(StandardStreams::keep);
    const QString folder = QString::fromLocal8Bit(argv[1]);
    const QTemporaryDir state;
    setSharedPreferenceStore(std::make_unique<SessionPreferences>(
        std::make_unique<FilePreferenceStore>(state.filePath(u"preferences.json"_s))));
    std::printf("%-28s %9s %12s %12s\n", "longest wait", "queued in", "until then", "analysing");
    measure("199,999 photos, one video", makeFiles(folder, u"jpg"_s), state.filePath(u"a"_s));
    measure("200,000 videos", makeFiles(folder, u"mp4"_s), state.filePath(u"b"_s));
    removeWorkFolder();
    return 0;
}
