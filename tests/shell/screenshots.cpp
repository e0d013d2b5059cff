// Pictures of the window in the states that a user meets, for looking at. By hand:
//   tests/shell/screenshots.sh BUILD_FOLDER OUTPUT_FOLDER
// Each argument list is FOLDER LANGUAGE light|dark [rtl].
#include "settings/alerts.h"
#include "settings/logFiles.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "shell/alertBoxes.h"
#include "shell/batchDrawer.h"
#include "shell/choiceRow.h"
#include "shell/desktopSession.h"
#include "shell/dropArea.h"
#include "shell/helpCommands.h"
#include "shell/mainMenu.h"
#include "shell/progressPanel.h"
#include "support/makeClip.h"
#include "support/urlSink.h"
#include "tasks/workFolder.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QMenu>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

QPalette darkPalette()
{
    QPalette palette(QColor(0x31, 0x36, 0x3b), QColor(0x2a, 0x2e, 0x32));
    const QColor text(0xef, 0xf0, 0xf1);
    palette.setColor(QPalette::Base, QColor(0x1b, 0x1e, 0x20));
    palette.setColor(QPalette::AlternateBase, QColor(0x23, 0x26, 0x29));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                            QPalette::ToolTipText, QPalette::BrightText})
        palette.setColor(role, text);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(0x7f, 0x83, 0x86));
    palette.setColor(QPalette::Highlight, QColor(0x3d, 0xae, 0xe9));
    palette.setColor(QPalette::HighlightedText, QColor(0x10, 0x10, 0x10));
    return palette;
}

/// Three films; the second can be spoilt later.
QStringList makeHolidayClips(const QString &folder)
{
    const auto source = [](const char *colours, int seconds, const char *size) {
        return u"gradients=s=%3:r=5:d=%2:speed=0.02:nb_colors=3:%1"_s.arg(QLatin1String(colours))
            .arg(seconds)
            .arg(QLatin1String(size));
    };
    const QStringList clips{folder + u"/2023-07 Lake and mountains, the long walk home.mp4"_s,
                            folder + u"/Interview.mkv"_s, folder + u"/Été à la plage.mp4"_s};
    makeClip(clips[0], source("c0=0x1d3557:c1=0xa8dadc:c2=0x457b9d", 75, "640x360"),
             {u"-g"_s, u"10"_s});
    makeClip(clips[1], source("c0=0x5f0f40:c1=0xfb8b24:c2=0x9a031e", 40, "480x360"),
             {u"-g"_s, u"10"_s});
    makeClip(clips[2], source("c0=0xe9c46a:c1=0x2a9d8f:c2=0x264653", 130, "640x360"),
             {u"-g"_s, u"10"_s});
    return clips;
}

void spoil(const QString &path)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(QByteArray(5000, 'x'));
}

class Photographer
{
public:
    Photographer(const QString &folder, const QString &suffix) : m_folder(folder), m_suffix(suffix)
    {
        QDir().mkpath(folder);
    }
    void take(QWidget &widget, const QString &name)
    {
        QTest::qWait(50);
        widget.grab().save(m_folder + u'/' + name + m_suffix + u".png"_s);
    }

private:
    QString m_folder;
    QString m_suffix;
};

template <class Condition>
void waitFor(Condition condition)
{
    if (!QTest::qWaitFor(condition, 60000))
        qFatal("waited in vain");
}

void analyse(DesktopSession &session, int rows)
{
    waitFor([&] {
        return session.model().rowCount() >= rows && !session.window().dropArea().isBusy();
    });
}

} // namespace

int main(int argc, char **argv)
{
    startLogs(StandardStreams::keep);
    QApplication application(argc, argv);
    setlocale(LC_NUMERIC, "C");
    const QStringList arguments = QApplication::arguments();
    const QString language = arguments.value(2);
    const QString look = arguments.value(3);
    setInterfaceLanguage(language);
    QApplication::setApplicationDisplayName(u"Vignar"_s);
    if (look == u"dark")
        QApplication::setPalette(darkPalette());
    if (arguments.value(4) == u"rtl")
        QApplication::setLayoutDirection(Qt::RightToLeft);
    UrlSink sink;
    Photographer photographer(
        arguments.value(1),
        u'-' + language + u'-' + look + arguments.value(4) +
            (qEnvironmentVariable("QT_SCALE_FACTOR") == u"2" ? u"-2x"_s : QString()));

    QTemporaryDir folder;
    setWorkFolder({});
    setUpWorkFolder(u"shots"_s);
    setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>());
    prefWrite(Prefs::prefDefautDstPathStr, folder.path());
    const QStringList clips = makeHolidayClips(folder.path() + u"/Holiday films"_s);
    {
        DesktopSession session(folder.filePath(u"state"_s));
        MainWindow &window = session.window();
        setAlertPresenter(std::make_unique<AlertBoxes>(&window));
        session.start();
        photographer.take(window, u"1-empty"_s);
        Q_EMIT window.dropped(clips);
        waitFor([&] { return session.model().rowCount() == 1; });
        photographer.take(window, u"2-analysing"_s);
        analyse(session, 3);
        photographer.take(window, u"3-ready"_s);
        spoil(clips[1]);
        session.go();
        waitFor([&] {
            return session.model().data(session.model().index(0), BatchModel::markerRole) ==
                   Puces::puceSuccess;
        });
        QTest::qWait(700);
        photographer.take(window, u"4-running"_s);
        session.setPaused(true);
        photographer.take(window, u"5-paused"_s);
        session.setPaused(false);
        waitFor([&] { return !session.isRunning(); });
        window.drawer().selectRows({1});
        photographer.take(window, u"6-finished"_s);
        QTimer::singleShot(300, [&] {
            photographer.take(*QApplication::activeModalWidget(), u"7-question"_s);
            QApplication::activeModalWidget()->close();
        });
        session.window().menu().removeAll->trigger();
        window.layoutChooser().choose(bigLayout);
        Q_EMIT window.layoutChooser().chosenByUser(bigLayout);
        photographer.take(window, u"10-other-choice"_s);
        session.applyChoices({0});
        window.drawer().selectRows({0});
        photographer.take(window, u"13-out-of-date"_s);
        // The question holds up whoever waits for it; a timer looks at it from inside.
        QTimer watch;
        watch.callOnTimeout([&] {
            QWidget *question = QApplication::activeModalWidget();
            if (!question)
                return;
            watch.stop();
            photographer.take(*question, u"11-replace"_s);
            session.stop();
            question->close();
        });
        watch.start(50);
        session.go();
        waitFor([&] { return !session.isRunning(); });
        window.menu().showLog->trigger();
        for (QWidget *top : QApplication::topLevelWidgets()) {
            if (qobject_cast<QDialog *>(top))
                photographer.take(*top, u"12-log"_s);
        }
        QMenu menu;
        for (QAction *action : window.menu().rowActions())
            if (action)
                menu.addAction(action);
            else
                menu.addSeparator();
        menu.popup({0, 0});
        photographer.take(menu, u"8-menu"_s);
        menu.close();
        window.menu().about->trigger();
        photographer.take(*QApplication::activeModalWidget(), u"9-about"_s);
        setAlertPresenter({});
    }
    removeWorkFolder();
    return 0;
}
