#include "app/appDelegate.h"

#include "app/frameGrabber.h"
#include "classShared/lineLog.h"
#include "settings/alerts.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

AnalysisReaders readersWith(MovieFramework *framework)
{
    AnalysisReaders readers = systemReaders(framework);
    readers.grabTestFrame = [framework](const QString &source, const QString &folder,
                                        const QSize &size) {
        return framework && grabTestFrame(*framework, source, folder, size);
    };
    return readers;
}

} // namespace

appDelegate::appDelegate(Outlets &outlets, std::unique_ptr<MovieFramework> movieFramework)
    : m_outlets(outlets),
      m_movieFramework(std::move(movieFramework)),
      m_batch(outlets),
      m_reporter(outlets),
      m_analysisDriver(outlets, m_batch, m_reporter, readersWith(m_movieFramework.get())),
      m_intake(outlets, m_batch, m_analysisDriver),
      m_sheetDriver(outlets, m_batch, m_reporter)
{
    clearWorkingKeys();
    connect(&m_intake, &Intake::busyStarted, &m_sheetDriver,
            [this] { m_sheetDriver.taskToSuspendTemporary(true); });
    connect(&m_intake, &Intake::busyEnded, &m_sheetDriver,
            [this] { m_sheetDriver.taskToSuspendTemporary(false); });
}

appDelegate::~appDelegate() = default;

void appDelegate::clearWorkingKeys()
{
    for (const QLatin1String name : RunKeys::names)
        prefDelete(QString(name));
}

void appDelegate::draggedFiles(const QStringList &paths, FoldersTaken folders)
{
    m_intake.draggedFiles(paths, folders);
}

void appDelegate::applicationOpenFiles(const QStringList &paths, FoldersTaken folders)
{
    m_waitingToOpen.append(paths);
    QMetaObject::invokeMethod(
        this, [this, paths, folders] { performOpenFiles(paths, folders); }, Qt::QueuedConnection);
}

void appDelegate::performOpenFiles(const QStringList &paths, FoldersTaken folders)
{
    logLine(u"drag'n'drop onto icon…");
    m_waitingToOpen.removeFirst();
    draggedFiles(paths, folders);
}

QStringList appDelegate::unfinishedSources() const
{
    QStringList sources = m_analysisDriver.unfinishedSources() + m_intake.droppedItems();
    for (const QStringList &paths : m_waitingToOpen)
        sources += paths;
    return sources;
}

bool appDelegate::iba_batchGoBt(RowsToMake rows)
{
    return m_sheetDriver.iba_batchGoBt(rows);
}

bool appDelegate::iba_batchGoBt(const QSet<QString> &sources)
{
    return m_sheetDriver.iba_batchGoBt(sources);
}

void appDelegate::iba_taskStopBt(RunnerKind kind)
{
    if (kind == RunnerKind::analysis)
        stopAnalysis();
    else
        m_sheetDriver.requestStop();
}

void appDelegate::iba_taskPauseBt(bool isToPause)
{
    if (isToPause)
        m_sheetDriver.pause();
    else
        m_sheetDriver.resume();
}

bool appDelegate::isCloseQuit() const
{
    if (!m_sheetDriver.isActive())
        return true;
    return alertTimed(localised(u"Process in progress !"_s), localised(u"D_quit_1"_s),
                      localised(u"D_quit_2"_s), localised(u"D_Annuler"_s), {}, AlertStyle::warning,
                      0) == AlertButton::first;
}

void appDelegate::stopAnalysis()
{
    m_intake.giveUp();
    m_analysisDriver.requestStop();
}

void appDelegate::stopAll()
{
    stopAnalysis();
    m_sheetDriver.requestStop();
}

} // namespace vignar
