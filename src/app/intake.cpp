#include "app/intake.h"

#include "app/analysisDriver.h"
#include "app/batchList.h"
#include "app/outlets.h"
#include "classShared/lineLog.h"
#include "classShared/standIns.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"

#include <QFileInfo>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

QString resolvedAlias(const QString &path)
{
    const QString target = followedLink(path);
    if (target != path) {
        logLine(u"actual str          : %@", path);
        logLine(u"new    str          : %@", target);
    }
    return target;
}

/// The item, or the target of a link, with what is under it where that is a folder.
struct Item {
    QString path;
    FolderEntries entries;
};

Item openedItem(const QString &dropped)
{
    const QFileInfo info(dropped);
    const bool isPlainFolder = info.isDir() && !info.isSymLink();
    const QString path = isPlainFolder ? dropped : resolvedAlias(dropped);
    return {path, QFileInfo(path).isDir() ? entriesUnder(path) : FolderEntries()};
}

} // namespace

FolderEntries withFolderContents(const QStringList &dropped)
{
    Item first = openedItem(dropped.constFirst());
    if (first.entries.paths.isEmpty()) {
        first.entries.paths = dropped;
        first.entries.paths.front() = first.path;
    }
    return first.entries;
}

FolderEntries withContentsOfFolders(const QStringList &dropped)
{
    FolderEntries all;
    for (const QString &each : dropped) {
        const Item item = openedItem(each);
        all.unread += item.entries.unread;
        if (item.entries.paths.isEmpty())
            all.paths.append(item.path);
        else
            all.paths.append(item.entries.paths);
    }
    return all;
}

Intake::Intake(Outlets &outlets, const BatchList &batch, AnalysisDriver &analysis, QObject *parent)
    : QObject(parent), m_outlets(outlets), m_batch(batch), m_analysis(analysis)
{
    connect(&m_analysis, &AnalysisDriver::ended, this, &Intake::leaveBusyLook);
}

void Intake::draggedFiles(const QStringList &paths, FoldersTaken folders)
{
    logLine(u"drag'n'drop         -> draggedFiles : %lu", paths.size());
    if (paths.isEmpty())
        return;
    m_drops.append({paths, folders});
    enterBusyLook();
    searchNext();
}

void Intake::giveUp()
{
    m_drops.clear();
    m_isGivenUp = m_search.isRunning();
    m_search.cancel();
}

bool Intake::isBusy() const
{
    return m_search.isRunning() || !m_drops.isEmpty() || m_analysis.isActive();
}

QStringList Intake::droppedItems() const
{
    QStringList items;
    for (const Drop &drop : m_drops)
        items += drop.paths;
    return items;
}

Intake::Admission Intake::admit(const Drop &drop, const KnownSources &known)
{
    FolderEntries found = drop.folders == FoldersTaken::all ? withContentsOfFolders(drop.paths)
                                                            : withFolderContents(drop.paths);
    const QStringList &paths = found.paths;
    Admission admission;
    admission.unread = std::move(found.unread);
    QSet<QString> met;
    met.reserve(paths.size());
    for (qsizetype index = 0; index < paths.size(); ++index) {
        const QString &path = paths[index];
        const qsizetype before = met.size();
        met.insert(path);
        if (met.size() == before || known.contains(path)) {
            logLine(u"doublon             : pas de sur-analyse pour rien ;-) #%ld/%lu : %@",
                    index + 1, paths.size(), path);
            continue;
        }
        ++admission.fresh;
        if (!hasAdmittedExtension(path))
            continue;
        admission.sources.append(path);
        admission.sourceSet.insert(path);
    }
    return admission;
}

void Intake::searchNext()
{
    if (m_search.isRunning())
        return;
    if (m_drops.isEmpty())
        return leaveBusyLook();
    // One after another: what a drop brought is known when the next one is looked at.
    m_search.start(
        this,
        [drop = m_drops.constFirst(), known = m_analysis.knownSources()] {
            return admit(drop, known);
        },
        [this](const Admission &admission) {
            if (!std::exchange(m_isGivenUp, false)) {
                m_drops.removeFirst();
                taken(admission);
            }
            searchNext();
        });
}

void Intake::taken(const Admission &admission)
{
    for (const UnreadEntry &unread : admission.unread) {
        logLine(u"not read            : %@ : %@", unread.path, unread.reason);
        m_outlets.sourceRefused(unread.path, unread.reason);
    }
    if (!admission.sources.isEmpty()) {
        logLine(u"drag'n'drop, final  = %lu", admission.sources.size());
        m_analysis.take(admission.sources, admission.sourceSet);
        return;
    }
    logLine(u"no compatible file (or no new files ;-))");
    if (admission.fresh > 0 && admission.unread.isEmpty())
        m_outlets.showSheetNotice(localised(u"dndNonCompliantFolderFilesTitle"_s),
                                  localised(u"D_go_source3"_s));
}

void Intake::enterBusyLook()
{
    m_outlets.setDropArea(u"dndAppOff"_s, localised(u"D_action_analyse"_s));
    m_outlets.setWheelSpinning(RunnerKind::analysis, true);
    m_outlets.setStopVisible(RunnerKind::analysis, true);
    m_outlets.setGoEnabled(false);
    Q_EMIT busyStarted();
}

void Intake::leaveBusyLook()
{
    if (isBusy())
        return;
    m_outlets.setDropArea(u"dndApp"_s,
                          filled(u"\n\n\n\n%@", localised(u"dndCaptionFolderFiles"_s)));
    m_outlets.setWheelSpinning(RunnerKind::analysis, false);
    m_outlets.setStopVisible(RunnerKind::analysis, false);
    logLine(u"was suspended       : to resume");
    Q_EMIT busyEnded();
    const bool isBatchRunning = prefStored(RunKeys::encCurrentProcessingFile).has_value();
    m_outlets.setGoEnabled(m_batch.count() > 0 && !isBatchRunning);
    m_outlets.analysisEnded();
}

} // namespace vignar
