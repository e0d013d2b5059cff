#include "app/intake.h"

#include "app/batchList.h"
#include "app/outlets.h"
#include "app/sourceFiles.h"
#include "classShared/lineLog.h"
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
    const QFileInfo info(path);
    if (!info.isSymLink() || !info.exists())
        return path;
    const QString target = info.canonicalFilePath();
    logLine(u"actual str          : %@", path);
    logLine(u"new    str          : %@", target);
    return target;
}

} // namespace

QStringList withFolderContents(const QStringList &dropped)
{
    QStringList paths = dropped;
    QString &first = paths.front();
    if (!QFileInfo(first).isDir() || QFileInfo(first).isSymLink())
        first = resolvedAlias(first);
    if (!QFileInfo(first).isDir())
        return paths;
    const QStringList entries = entriesUnder(first);
    return entries.isEmpty() ? paths : entries;
}

Intake::Intake(Outlets &outlets, const BatchList &batch, QObject *parent)
    : QObject(parent), m_outlets(outlets), m_batch(batch)
{
}

void Intake::draggedFiles(const QStringList &paths)
{
    logLine(u"drag'n'drop         -> draggedFiles : %lu", paths.size());
    if (paths.isEmpty())
        return;
    enterBusyLook();

    const QStringList fresh = withoutKnownSources(withFolderContents(paths));
    QStringList admitted;
    std::copy_if(fresh.begin(), fresh.end(), std::back_inserter(admitted),
                 [](const QString &path) { return hasAdmittedExtension(path); });
    if (!admitted.isEmpty()) {
        logLine(u"drag'n'drop, final  = %lu", admitted.size());
        storePending(admitted);
        m_outlets.setStopVisible(RunnerKind::analysis, true);
        Q_EMIT sourcesReady();
        return;
    }

    logLine(u"no compatible file (or no new files ;-))");
    if (!fresh.isEmpty())
        m_outlets.showSheetNotice(localised(u"dndNonCompliantFolderFilesTitle"_s),
                                  localised(u"D_go_source3"_s));
    // Sources of an earlier drop may still be under analysis; its end leaves the look.
    if (prefStored(RunKeys::analysisSrcPathStr))
        return;
    leaveBusyLook();
}

void Intake::enterBusyLook()
{
    m_outlets.setDropArea(u"dndAppOff"_s, localised(u"D_action_analyse"_s));
    m_outlets.setWheelSpinning(RunnerKind::analysis, true);
    m_outlets.setGoEnabled(false);
    Q_EMIT busyStarted();
}

void Intake::leaveBusyLook()
{
    m_outlets.setDropArea(u"dndApp"_s,
                          filled(u"\n\n\n\n%@", localised(u"dndCaptionFolderFiles"_s)));
    m_outlets.setWheelSpinning(RunnerKind::analysis, false);
    m_outlets.setStopVisible(RunnerKind::analysis, false);
    logLine(u"was suspended       : to resume");
    Q_EMIT busyEnded();
    const bool isBatchRunning = prefStored(RunKeys::encCurrentProcessingFile).has_value();
    m_outlets.setGoEnabled(m_batch.count() > 0 && !isBatchRunning);
}

QStringList Intake::withoutKnownSources(const QStringList &paths) const
{
    QStringList fresh;
    for (qsizetype index = 0; index < paths.size(); ++index) {
        const QString &path = paths[index];
        if (m_batch.holdsSource(path) || fresh.contains(path))
            logLine(u"doublon             : pas de sur-analyse pour rien ;-) #%ld/%lu : %@",
                    index + 1, paths.size(), path);
        else
            fresh.append(path);
    }
    return fresh;
}

void Intake::storePending(const QStringList &paths)
{
    Dico pending = prefStored(RunKeys::analysisSrcPathesDico).value_or(Dico());
    const QVariantList waiting = pending.values();
    for (const QString &path : paths) {
        if (!waiting.contains(path))
            pending.insert(QString::number(pending.size()), path);
    }
    prefWriteDico(RunKeys::analysisSrcPathesDico, pending);
    prefWrite(RunKeys::analysisDeb, 1);
}

} // namespace vignar
