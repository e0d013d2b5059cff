#include "tasks/taskLauncher.h"
#include "tasks/workFolder.h"

#include <QCoreApplication>
#include <QTextStream>

#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace vignar;

/// Passes the words of a run on.
struct Host : TaskLauncherDelegate {
    void taskLauncherDidReceiveNewString(taskLauncher &, const QString &text) override
    {
        QTextStream(stdout) << text;
    }
};

/// Holds the work folder of the instance that its argument names; without one, runs a tool
/// that would not end for long. Waits to be killed.
int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (argc > 1) {
        setUpWorkFolder(QCoreApplication::arguments().at(1));
        QTextStream(stdout) << workFolder();
        ::pause();
    }
    Host host;
    taskLauncher launcher;
    launcher.setDelegate(&host);
    launcher.launchTasksWithArguments({u"/bin/sh"_s, u"-c"_s, u"echo $$; exec sleep 600"_s});
    return QCoreApplication::exec();
}
