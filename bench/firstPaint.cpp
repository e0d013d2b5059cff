// How long a user waits for the window: from starting the program to its first pixels on the
// screen, mean and largest of ten starts. Needs an X server that shows nothing else.
//
//   xvfb-run -a bench_firstPaint PROGRAM

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QThread>

#include <algorithm>
#include <cstdio>

namespace
{

constexpr int starts = 10;
constexpr int longestWait = 20000; // milliseconds

/// The middle line of the screen, which every window that starts in its middle or at its
/// top left corner crosses.
QImage middleLine()
{
    QScreen &screen = *QGuiApplication::primaryScreen();
    const QSize size = screen.size();
    return screen.grabWindow(0, 0, size.height() / 3, size.width(), 1).toImage();
}

/// Milliseconds; nothing came up: negative.
double oneStart(const QString &program)
{
    const QImage empty = middleLine();
    QElapsedTimer clock;
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    clock.start();
    process.start(program, QStringList());
    bool isPainted = false;
    while (!isPainted && clock.elapsed() < longestWait && process.state() != QProcess::NotRunning) {
        QThread::usleep(500);
        isPainted = middleLine() != empty;
        if (!isPainted && clock.elapsed() > 100)
            process.waitForFinished(0);
    }
    const double waited = 1e-6 * double(clock.nsecsElapsed());
    process.terminate();
    if (!process.waitForFinished(longestWait))
        process.kill();
    while (middleLine() != empty && clock.elapsed() < 2 * longestWait)
        QThread::msleep(10);
    return isPainted ? waited : -1;
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    if (argc < 2)
        return 2;
    double sum = 0;
    double largest = 0;
    for (int start = 0; start < starts; ++start) {
        const double milliseconds = oneStart(QString::fromLocal8Bit(argv[1]));
        if (milliseconds < 0)
            return 1;
        sum += milliseconds;
        largest = std::max(largest, milliseconds);
    }
    std::printf("%.0f %.0f\n", sum / starts, largest);
    return 0;
}
