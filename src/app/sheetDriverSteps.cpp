#include "app/sheetDriver.h"

#include "app/batchList.h"
#include "app/progressReporter.h"
#include "app/sourceFiles.h"
#include "classShared/files.h"
#include "classShared/lineLog.h"
#include "classShared/paths.h"
#include "classShared/sizes.h"
#include "settings/alerts.h"
#include "settings/applicationPlaces.h"
#include "settings/logFiles.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "sheet/diskPicture.h"
#include "sheet/extractionPasses.h"
#include "sheet/sheetComposer.h"
#include "tasks/toolPlaces.h"

#include <QDateTime>
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

/// The info line or map of the display dictionary, and the check box that shows it.
struct SheetItem {
    QLatin1String display;
    Key<int> preference;
};
constexpr SheetItem sheetItems[] = {
    {Keys::name.text, Prefs::pageName},           {Keys::location.text, Prefs::pageLocation},
    {Keys::date.text, Prefs::pageDate},           {Keys::duration.text, Prefs::pageDuration},
    {Keys::vIdentity.text, Prefs::pageVIdentity}, {Keys::poids.text, Prefs::pagePoids},
    {Keys::essence.text, Prefs::pageEssence},     {Keys::timecode.text, Prefs::prefTimecode},
};

Dico workingRecord()
{
    return prefStored(RunKeys::processEncDico).value_or(Dico());
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
    write(input, Keys::thNumberInt, requestedThumbnails(layout));
    return input;
}

QString SheetDriver::destination() const
{
    return destinationFolder(m_outlets.destinationField());
}

bool SheetDriver::isDiskPictureWanted() const
{
    return prefValue(Prefs::prefMultimediaHd) &&
           !(prefValue(Prefs::prefDerush) && prefValue(Prefs::prefDerushNoMultimediaHd));
}

SheetTarget SheetDriver::plannedTarget(const QString &srcPath, QSet<QString> &taken) const
{
    const QString defaultSuffix = read(prefDefaults(), Prefs::prefSuffix).value_or(QString());
    return sheetTarget(
        destination(), srcPath,
        sheetSuffix(prefValue(Prefs::prefSuffix), isDiskPictureWanted(), defaultSuffix), taken);
}

StepEnd SheetDriver::beginRow()
{
    prefDeleteChildDico0(RunKeys::processEncDico, Keys::encDeb);
    prefWrite(RunKeys::encFin, 1);
    m_outlets.setActionText(RunnerKind::main, QFileInfo(m_outcome->source).fileName());
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

    m_target = plannedTarget(m_outcome->source, m_taken);
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
    const QString sheet = target.sheetFile(m_dpi == 0);
    if (QFileInfo::exists(sheet) && !mayReplace(sheet)) {
        m_outcome->status = SheetOutcome::Status::kept;
        m_outcome->sheet = sheet;
        return Failure{localised(u"V_reason_kept"_s)};
    }
    m_isDiskPictureKept = isDiskPictureWanted() && QFileInfo::exists(target.diskPicturePath) &&
                          !mayReplace(target.diskPicturePath);
    return {};
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
    m_passesDone = 0;
    if (m_planned < 1)
        return Failure{localised(u"V_reason_noThumbnail"_s)};
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

StepEnd SheetDriver::runGrabberPass()
{
    const Dico passes = read(workingRecord(), Keys::appvgThQt).value_or(Dico());
    prefDeleteChildDico0(RunKeys::processEncDico, Keys::appvgThQt);
    const Dico display = read(workingRecord(), Keys::appvgDisplay).value_or(Dico());
    const qsizetype pictures = read(display, Keys::timecode).value_or(Dico()).size();
    startRun({passes.value(u"0"_s).toStringList(), double(std::max<qsizetype>(1, pictures)),
              parseSteps, RunnerKind::main});
    return StepEnd::running;
}

StepEnd SheetDriver::runFfmpegPass()
{
    Dico passes = read(workingRecord(), Keys::appvgThFf).value_or(Dico());
    const auto lowest = std::min_element(
        passes.keyBegin(), passes.keyEnd(),
        [](const QString &one, const QString &other) { return one.toInt() < other.toInt(); });
    m_lastPassKey = *lowest;
    m_lastPass = passes.take(m_lastPassKey).toStringList();
    if (passes.isEmpty()) {
        prefDeleteChildDico0(RunKeys::processEncDico, Keys::appvgThFf);
        logDebug(u"RAZ [md count]==%lu, new dico processEncDico > appvgThFf : %@", passes.size(),
                 passes);
    } else {
        prefWriteChildDico(RunKeys::processEncDico, Keys::appvgThFf, passes);
    }
    m_passesDone = m_lastPassKey.toInt() + 1;
    m_outlets.setProgressValue(ProgressBar::steps, m_passesDone);
    m_outlets.setStepsText(
        filled(u"%@ %ld/%ld", localisedCapitalised(u"th"_s), m_passesDone, m_planned));
    startRun({m_lastPass, 0, parseIndeterminate, RunnerKind::main});
    return StepEnd::running;
}

void SheetDriver::settleLastPass()
{
    if (m_lastPass.isEmpty())
        return;
    const QStringList pass = std::exchange(m_lastPass, {});
    if (m_taskStopInt == 1 ||
        QFileInfo(thumbnailPath(m_folder.path, m_lastPassKey.toInt())).size() > 0)
        return;
    logLine(u"th not extracted    :-( #%@ %@", m_lastPassKey,
            m_reporter.lastWords(RunnerKind::main).right(500));
    const QStringList next = nextAttempt(pass);
    if (next.isEmpty())
        return;
    Dico passes = read(workingRecord(), Keys::appvgThFf).value_or(Dico());
    passes.insert(m_lastPassKey, next);
    prefWriteChildDico(RunKeys::processEncDico, Keys::appvgThFf, passes);
}

void SheetDriver::startRun(const RunRequest &request)
{
    logDebug(u"post tl with args");
    m_outlets.setActionText(RunnerKind::main, QFileInfo(m_outcome->source).fileName());
    if (!m_reporter.tasklauncherStart(request))
        again(u"encProcesses"_s);
}

StepEnd SheetDriver::compose()
{
    const Dico display = displayOfSheet();
    prefDeleteChildDico0(RunKeys::processEncDico, Keys::appvgDisplay);
    m_outcome->thumbnails =
        static_cast<int>(read(display, Keys::th).value_or(QStringList()).size());
    m_outcome->missing = m_planned - m_outcome->thumbnails;
    if (m_outcome->thumbnails == 0)
        return failRow(localised(u"V_reason_noThumbnail"_s), SheetOutcome::Status::failed);
    const SheetFormat format = m_dpi == 0 ? SheetFormat::pdf : SheetFormat::jpeg;
    const Result<void> composed = composeSheet(display, format);
    if (!composed)
        return failRow(composed.reason(), SheetOutcome::Status::failed);
    m_outcome->sheet = sheetPath(m_target.dstPath, format);
    m_outcome->status = SheetOutcome::Status::made;
    makeDiskPicture(m_folder.path);
    prefWriteChildDico(RunKeys::processEncDico, Keys::dstPathStr, m_outcome->sheet);
    return StepEnd::again;
}

Dico SheetDriver::displayOfSheet() const
{
    Dico display = read(workingRecord(), Keys::appvgDisplay).value_or(Dico());
    write(display, Keys::dstPathStr, m_target.dstPath);
    write(display, Keys::th, extractedPictures(m_folder.path));
    write(display, Keys::bigMedMinMix, m_layout);
    write(display, Keys::borderColor, prefValue(Prefs::prefBorderColor));
    write(display, Keys::borderSize, prefValue(Prefs::prefBorderSize));
    write(display, Keys::bkgColor, prefValue(Prefs::pageBkgColor));
    if (m_dpi > 0)
        write(display, Keys::pageWidth, m_dpi);
    if (prefValue(Prefs::bannerDisplayNo))
        write(display, Keys::bannerDisplayNo, 1);
    for (const SheetItem &item : sheetItems) {
        if (!prefValue(item.preference))
            display.remove(item.display);
    }
    return display;
}

void SheetDriver::makeDiskPicture(const QString &pictureFolder)
{
    if (!isDiskPictureWanted() || m_isDiskPictureKept)
        return;
    if (multimediaDiskThumb(pictureFolder, m_target.diskPicturePath))
        m_outcome->diskPicture = m_target.diskPicturePath;
}

StepEnd SheetDriver::endQuickTimeEncoding()
{
    prefDeleteChildDico0(RunKeys::processEncDico, Keys::encQtEnc);
    m_outlets.setProgressMaximum(ProgressBar::main, 100);
    m_outlets.setProgressValue(ProgressBar::main, 100);
    return StepEnd::again;
}

StepEnd SheetDriver::closeRow()
{
    prefDelete(RunKeys::encFin);
    if (m_outcome)
        finishRow();
    prefDelete(RunKeys::processEncDico);
    again(u"encBatch"_s);
    return StepEnd::running;
}

void SheetDriver::finishRow()
{
    if (!m_folder.path.isEmpty())
        releaseExtractionFolder(m_folder.path, m_folder.made);
    m_folder = {};
    m_outcome->seconds = double(m_clock.elapsed()) / 1000.0;
    const bool isMade = m_outcome->status == SheetOutcome::Status::made;
    if (m_batch.resultat(m_row) == Puces::puceCurrent)
        m_batch.setResultat(m_row, isMade ? Puces::puceSuccess : Puces::puceFailure);
    logVerbose(u"reste %lu src(s)", m_batch.count() - m_row - 1);
    if (isMade)
        writeSummary();
    m_outlets.sheetFinished(*std::exchange(m_outcome, {}));
}

void SheetDriver::writeSummary() const
{
    const double duration = read(workingRecord(), Keys::w_duration).value_or(0);
    const double elapsed = std::max<qint64>(1, m_clock.elapsed() / 1000);
    const QString site = filled(u"(made by %@)", QString(bundleName).toLower());
    summaryLogAppend(filled(u"   Total speed      : real time / %.2f\ndate                : %@\n%@",
                            duration / elapsed,
                            QDateTime::currentDateTime().toString(u"yyyy-MM-dd HH:mm:ss"_s), site));
}

} // namespace vignar
