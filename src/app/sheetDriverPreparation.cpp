#include "app/sheetDriver.h"

#include "app/batchList.h"
#include "app/sheetDisplay.h"
#include "classShared/files.h"
#include "classShared/lineLog.h"
#include "classShared/sizes.h"
#include "settings/alerts.h"
#include "settings/applicationPlaces.h"
#include "settings/logFiles.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "tasks/toolPlaces.h"

#include <QFileInfo>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// Room asked for on the destination's volume, in parts of the estimated weight.
constexpr double spaceFactor = 2.1;
/// How long the replace question and the notice of a full disk wait.
constexpr int questionSeconds = 10;

int requestedThumbnails(int layout)
{
    switch (layout) {
    case bigLayout:
        return prefValue(Prefs::prefLimitBig);
    case medLayout:
        return prefValue(Prefs::prefLimitMed);
    case minLayout:
        return prefValue(Prefs::prefLimitMin);
    default:
        return prefValue(Prefs::prefLimitMix);
    }
}

} // namespace

SourceDico SheetDriver::planningInput(const SourceDico &source, int layout)
{
    SourceDico input = source;
    if (prefValue(Prefs::prefLimitAuto))
        write(input, Keys::thNumberAuto, 1);
    if (prefValue(Prefs::prefDerush)) {
        write(input, Keys::thDerush, 1);
        write(input, Keys::thDerushInterval, prefValue(Prefs::prefDerushInterval));
    }
    if (prefValue(Prefs::prefTrueTimecode))
        write(input, Keys::thTrueTimecode, 1);
    write(input, Keys::thNumberInt, requestedThumbnails(layout));
    return input;
}

QString SheetDriver::destination() const
{
    return destinationFolder(m_outlets.destinationField());
}

SheetTarget SheetDriver::plannedTarget(const SourceDico &source, QSet<QString> &taken) const
{
    return sheetTarget(destination(), readStr(source, Keys::srcPathStr), sheetNaming(source),
                       taken);
}

StepEnd SheetDriver::beginRow()
{
    prefDeleteChildDico0(RunKeys::processEncDico, Keys::encDeb);
    prefWrite(RunKeys::encFin, 1);
    m_outlets.setActionText(RunnerKind::main, QFileInfo(m_outcome->source).fileName());
    m_outlets.setStepsText({});
    m_outlets.setProgressMaximum(ProgressBar::steps, 0);
    if (const Result<void> prepared = prepareRow(); !prepared)
        return failRow(prepared.reason(), m_outcome->status);
    return StepEnd::again;
}

Result<void> SheetDriver::prepareRow()
{
    if (ffmpegPath().isEmpty())
        return Failure{localised(u"V_reason_noFfmpeg"_s)};
    if (auto folder = prepareFolder(); !folder)
        return folder;

    m_target = plannedTarget(workingRecord(), m_taken);
    prefWriteChildDico(RunKeys::processEncDico, Keys::dstPathStr, m_target.dstPath);
    prefWriteChildDico(RunKeys::processEncDico, Keys::dstPathStrMultimediaHd,
                       m_target.diskPicturePath);
    if (auto answer = askToReplace(m_target); !answer)
        return answer;
    if (auto space = checkSpace(); !space)
        return space;

    auto folder = claimExtractionFolder(m_target.dstPath);
    if (!folder)
        return Failure{folder.reason()};
    m_folder = *folder;
    prefWriteChildDico(RunKeys::processEncDico, Keys::purgePathStr1, m_folder.path);
    summaryLogAppend(filled(u"\n----------\n\nsource              : %@\n", m_outcome->source));
    summaryLogAppend(filled(u"destination         : %@\n", m_target.dstPath));
    prefWriteChildDico(RunKeys::processEncDico, Keys::encQtEnc, 1);
    return planRow();
}

Result<void> SheetDriver::prepareFolder()
{
    const QString folder = destination();
    const bool isOurFolder = QFileInfo(folder).fileName() == bundleName;
    if (!QFileInfo(folder).isDir() && isOurFolder)
        mkdir(folder);
    if (QFileInfo(folder).isDir() && QFileInfo(folder).isWritable())
        return {};
    return Failure{filled(localised(u"V_reason_destination"_s), folder)};
}

Result<void> SheetDriver::askToReplace(const SheetTarget &target)
{
    const QString sheet = target.sheetFile(m_outcome->format);
    const bool isSheetThere = QFileInfo::exists(sheet);
    if (isSheetThere && !mayReplace(sheet)) {
        m_outcome->status = SheetOutcome::Status::kept;
        m_outcome->sheet = sheet;
        return Failure{localised(u"V_reason_kept"_s)};
    }
    m_outcome->isDiskPictureKept = isDiskPictureWanted() &&
                                   QFileInfo::exists(target.diskPicturePath) &&
                                   !mayReplace(target.diskPicturePath);
    if (prefValue(Prefs::prefWebVtt) && !isSheetThere)
        askToReplacePreview(target);
    return {};
}

void SheetDriver::askToReplacePreview(const SheetTarget &target)
{
    for (const QString &path : {target.vttFile(), target.spriteFile()}) {
        if (!QFileInfo::exists(path))
            continue;
        // One answer for both: cues that belong to another sprite would show nonsense.
        if (!mayReplace(path))
            m_outcome->previewNote = filled(localised(u"V_reason_previewKept"_s), path);
        return;
    }
}

bool SheetDriver::mayReplace(const QString &path)
{
    if (const auto earlier = prefStored(RunKeys::replaceFilesCheck)) {
        logLine(u"pre-choix user      : yes");
        return *earlier == 1;
    }
    const QString title = QFileInfo(path).fileName();
    const QString text = filled(localised(u"D_go_dossier_destination4Bis"_s), path);
    const QString keep = localised(u"D_keep"_s);
    const QString replace = localised(u"D_replace"_s);
    if (m_batch.count() < 2)
        return alertTimed(title, text, keep, replace, {}, AlertStyle::warning, questionSeconds) ==
               AlertButton::second;
    const AlertAnswer answer =
        alertTimedSuppressible(title, text, keep, replace, localised(u"D_applyToAll"_s),
                               AlertStyle::warning, questionSeconds);
    const bool isReplaced = answer.button == AlertButton::second;
    if (answer.isSuppressed)
        prefWrite(RunKeys::replaceFilesCheck, isReplaced ? 1 : 0);
    return isReplaced;
}

Result<void> SheetDriver::checkSpace() const
{
    const double necessary = spaceFactor * encDstPoidsEstimatif();
    const qint64 free = freeDiskSpaceMo(destination());
    logLine(u"free necessary space: %.1f vs %ld (MB)", necessary, free);
    if (free < 0 || free >= necessary)
        return {};
    alertTimed(localised(u"D_go_echec_disque1"_s), localised(u"D_go_echec_disque2"_s), {}, {}, {},
               AlertStyle::critical, questionSeconds);
    return Failure{filled(localised(u"V_reason_diskFull"_s), destination())};
}

Result<void> SheetDriver::planRow()
{
    const SheetPlan plan =
        planSheet(m_layout, planningInput(workingRecord(), m_layout), m_folder.path);
    m_planned = plan.thumbnails.count;
    m_instants = plan.thumbnails.instants;
    m_shownAt.clear();
    m_retakes = {plan.thumbnails, m_folder.path,
                 read(workingRecord(), Keys::w_duration).value_or(0)};
    if (m_planned < 1)
        return Failure{localised(u"V_reason_noRow"_s)};
    if (!plan.ffmpegPasses.isEmpty())
        prefWriteChildDico(RunKeys::processEncDico, Keys::appvgThFf, plan.ffmpegPasses);
    if (!plan.grabberPasses.isEmpty())
        prefWriteChildDico(RunKeys::processEncDico, Keys::appvgThQt, plan.grabberPasses);
    prefWriteChildDico(RunKeys::processEncDico, Keys::appvgDisplay, plan.display);
    m_outlets.setProgressMaximum(ProgressBar::steps, m_planned);
    return {};
}

StepEnd SheetDriver::planAgain()
{
    prefDeleteChildDico0(RunKeys::processEncDico, Keys::encV);
    if (const Result<void> planned = planRow(); !planned)
        return failRow(planned.reason(), SheetOutcome::Status::failed);
    return StepEnd::again;
}

} // namespace vignar
