#include "tasks/taskLauncher.h"
#include "tasks/workFolder.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace vignar;

namespace
{

void say(const QByteArray &text)
{
    std::fwrite(text.constData(), 1, static_cast<size_t>(text.size()), stdout);
    std::fflush(stdout);
}

[[noreturn]] void hang()
{
    for (;;)
        ::pause();
}

void copyInput()
{
    for (int byte = std::getchar(); byte != EOF; byte = std::getchar())
        std::putchar(byte);
}

/// Starts a hanging tool through a launcher, passes its words on, and waits.
struct Host : TaskLauncherDelegate {
    taskLauncher launcher;

    void taskLauncherDidReceiveNewString(taskLauncher &, const QString &text) override
    {
        say(text.toUtf8());
    }
    int run()
    {
        launcher.setDelegate(this);
        launcher.launchTasksWithArguments({QCoreApplication::applicationFilePath(), u"hang"_s});
        return QCoreApplication::exec();
    }
};

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(2);
    const QString mode = QCoreApplication::arguments().value(1);
    if (mode == u"args")
        say(arguments.join(u'\n').toUtf8() + '\n');
    else if (mode == u"streams")
        say("out\n"), std::fputs("err\n", stderr);
    else if (mode == u"flood")
        say(QByteArray(arguments[0].toInt(), 'x'));
    else if (mode == u"copy")
        copyInput();
    else if (mode == u"state")
        say(std::getchar() == EOF ? "no input, " : "input, "), say(qgetenv("LC_CTYPE"));
    else if (mode == u"crash")
        std::raise(SIGTERM);
    else if (mode == u"exit")
        return arguments[0].toInt();
    else if (mode == u"hang")
        say(QByteArray::number(::getpid()) + '\n'), hang();
    else if (mode == u"host")
        return Host().run();
    else if (mode == u"workFolder")
        setUpWorkFolder(arguments[0]), say(workFolder().toUtf8()), hang();
    while (mode == u"endless")
        say("more\n");
    return 0;
}
