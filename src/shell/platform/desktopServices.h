#pragma once

#include <QObject>

#include <memory>

namespace vignar
{

/// Keeps the computer from falling asleep by itself.
class SleepInhibitor
{
public:
    virtual ~SleepInhibitor() = default;
    /// reason is shown where the desktop lists what keeps it awake. Nothing while it is
    /// held already.
    virtual void inhibit(const QString &reason) = 0;
    virtual void release() = 0;
};

/// The progress on the program's icon in the taskbar or dock.
class TaskbarProgress
{
public:
    virtual ~TaskbarProgress() = default;
    /// done is 0 to 1.
    virtual void show(double done) = 0;
    virtual void hide() = 0;
};

/// What is told at the end of a batch.
struct EndNotice {
    QString title;
    /// Plain words without "<" and "&": some desktops read the text as markup.
    QString text;
    /// Words of the button that opens the folder of the sheets.
    QString folderButton;
};

/// Tells the user who looks elsewhere.
class EndNotifier : public QObject
{
    Q_OBJECT

public:
    /// Takes the place of the notice before.
    virtual void show(const EndNotice &notice) = 0;
    virtual void withdraw() = 0;

Q_SIGNALS:
    /// The user has clicked the notice itself; the token is for raiseWindow().
    void activated(const QByteArray &token);
    /// The user has pressed the folder button.
    void folderRequested();
};

/// What the desktop does for the program. None is null; one that the desktop lacks does
/// nothing and says so in the log.
struct DesktopServices {
    std::unique_ptr<SleepInhibitor> sleepInhibitor;
    std::unique_ptr<TaskbarProgress> taskbarProgress;
    std::unique_ptr<EndNotifier> endNotifier;
};

/// Those of the platform that the program is built for.
DesktopServices makeDesktopServices();

} // namespace vignar
