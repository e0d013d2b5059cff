#include "app/sheetDriver.h"

#include "app/batchList.h"
#include "app/measuredDuration.h"
#include "app/progressReporter.h"
#include "app/sheetDisplay.h"
#include "classShared/lineLog.h"
#include "settings/applicationPlaces.h"
#include "settings/logFiles.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "sheet/extractionPasses.h"
#include "sheet/jpegReading.h"
#include "sheet/pictureMatrix.h"
#include "sheet/pictureTimes.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QThread>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// The number of the last pass that is tried before a duration is doubted.
constexpr int plainVanguard = 2;

} // namespace

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
    if (!prefValue(Prefs::prefPlainPasses))
        return runAllPasses();
    Dico passes = read(workingRecord(), Keys::appvgThFf).value_or(Dico());
    const auto lowest = std::min_element(
        passes.keyBegin(), passes.keyEnd(),
        [](const QString &one, const QString &other) { return one.toInt() < other.toInt(); });
    // The first passes are enough to tell that the others look behind the end as well.
    if (lowest->toInt() > plainVanguard && isDurationDoubtful()) {
        measureDuration();
        return StepEnd::running;
    }
    m_lastPassKey = *lowest;
    m_lastPass = passes.take(m_lastPassKey).toStringList();
    if (passes.isEmpty()) {
        prefDeleteChildDico0(RunKeys::processEncDico, Keys::appvgThFf);
        logDebug(u"RAZ [md count]==%lu, new dico processEncDico > appvgThFf : %@", passes.size(),
                 passes);
    } else {
        prefWriteChildDico(RunKeys::processEncDico, Keys::appvgThFf, passes);
    }
    showStep(m_lastPassKey.toInt() + 1);
    startRun({.arguments = m_lastPass,
              .parseMode = parseIndeterminate,
              .limits = pictureLimits(1),
              .time = SourceBudget::picture});
    return StepEnd::running;
}

StepEnd SheetDriver::runAllPasses()
{
    m_outlets.setActionText(RunnerKind::main, QFileInfo(m_outcome->source).fileName());
    m_outlets.setWheelSpinning(RunnerKind::main, true);
    m_outlets.setProgressMaximum(ProgressBar::main, m_plan.count);
    const Dico passes = read(workingRecord(), Keys::appvgThFf).value_or(Dico());
    prefDeleteChildDico0(RunKeys::processEncDico, Keys::appvgThFf);
    // Not before: what ends of a row begun ahead must not take a step beside this one.
    connect(m_pictures.get(), &RowPictures::landed, this, &SheetDriver::showLanded,
            Qt::UniqueConnection);
    connect(m_pictures.get(), &RowPictures::finished, this, &SheetDriver::passesEnded,
            Qt::UniqueConnection);
    if (!std::exchange(m_isBegunAhead, false))
        m_pictures->start(passes, workingRecord(),
                          m_isDurationMeasured || m_retakes.isUnderWay()
                              ? PassExecutor::Effort::everything
                              : PassExecutor::Effort::vanguard);
    showStep(m_pictures->landedPictures());
    if (!m_pictures->isRunning())
        passesEnded();
    return StepEnd::running;
}

void SheetDriver::passesEnded()
{
    m_outlets.setWheelSpinning(RunnerKind::main, false);
    m_outlets.setProgressMaximum(ProgressBar::main, 0);
    m_outlets.setPercentText(RunnerKind::main, {});
    if (m_pictures->isLate() && m_taskStopInt != 1)
        failRow(faultReason(RunFault::tookTooLong), SheetOutcome::Status::failed);
    again(u"encProcesses"_s);
}

void SheetDriver::showLanded(int pictures)
{
    m_outlets.setProgressValue(ProgressBar::main, pictures);
    m_outlets.setPercentText(RunnerKind::main, filled(u"%ld %%", 100 * pictures / m_plan.count));
    showStep(pictures);
}

void SheetDriver::showStep(int pictures)
{
    // All have been there already.
    if (m_retakes.isUnderWay())
        return;
    m_outlets.setProgressValue(ProgressBar::steps, pictures);
    m_outlets.setStepsText(
        filled(u"%@ %ld/%ld", localisedCapitalised(u"th"_s), pictures, m_plan.count));
}

void SheetDriver::settleLastPass()
{
    if (m_lastPass.isEmpty())
        return;
    const QStringList pass = std::exchange(m_lastPass, {});
    if (m_taskStopInt == 1)
        return;
    if (isWholeJpeg(pass.constLast())) {
        const QString report = m_reporter.lastWords(RunnerKind::main);
        if (const auto seconds = toldTime(report, pass, m_lastPassKey.toInt()))
            m_pictures->setShownAt(pass.constLast(), *seconds);
        return;
    }
    QFile::remove(pass.constLast());
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

bool SheetDriver::isDurationDoubtful() const
{
    if (m_isDurationMeasured || m_retakes.isUnderWay() || usesMovieGrabber(workingRecord()))
        return false;
    // The instant of the first hardly depends on the duration.
    const QStringList pictures = extractedPictures(m_pictures->folder());
    const bool isFirstThere = !pictures.isEmpty() && thumbnailIndex(pictures.constFirst()) == 0;
    return pictures.size() == (isFirstThere ? 1 : 0) && pictures.size() < m_plan.count;
}

void SheetDriver::measureDuration()
{
    m_isDurationMeasured = true;
    m_measuring.start(
        this, [source = workingRecord()] { return measuredDuration(source); },
        [this](std::optional<double> seconds) { useMeasured(seconds); });
}

void SheetDriver::useMeasured(std::optional<double> seconds)
{
    again(u"encProcesses"_s);
    if (m_taskStopInt == 1)
        return;
    if (isOverstated(workingRecord(), seconds)) {
        if (const Result<void> planned = planMeasured(*seconds); !planned)
            failRow(planned.reason(), SheetOutcome::Status::failed);
        return;
    }
    // The duration is right: the rest of the passes may find what the first did not.
    if (const Dico passes = m_pictures->leftOut(); !passes.isEmpty())
        prefWriteChildDico(RunKeys::processEncDico, Keys::appvgThFf, passes);
}

StepEnd SheetDriver::compose()
{
    const SourceDico source = planningInput(workingRecord(), m_choices.layout);
    if (isDurationDoubtful()) {
        measureDuration();
        return StepEnd::running;
    }
    if (!m_areBlanksSettled && prefValue(Prefs::prefAvoidBlank) && !usesMovieGrabber(source)) {
        m_blankCheck.start(
            this, [retakes = m_retakes, source] { return checkBlanks(retakes, source); },
            [this](const BlankCheck &check) { takeBlanksAgain(check); });
        return StepEnd::running;
    }
    m_production.start(
        this,
        [production = production()] {
            QThread *thread = QThread::currentThread();
            return produceSheet(production, [thread] { return thread->isInterruptionRequested(); });
        },
        [this](const SheetProduct &product) { useProduct(product); });
    beginNextRow();
    return StepEnd::running;
}

void SheetDriver::takeBlanksAgain(const BlankCheck &check)
{
    m_retakes = check.retakes;
    m_areBlanksSettled = check.passes.isEmpty();
    if (!m_areBlanksSettled)
        prefWriteChildDico(RunKeys::processEncDico, Keys::appvgThFf, check.passes);
    again(u"encProcesses"_s);
}

SheetProduction SheetDriver::production() const
{
    const Dico planned = read(workingRecord(), Keys::appvgDisplay).value_or(Dico());
    SheetProduction production{.display = sheetDisplay(planned, m_choices.layout),
                               .format = m_outcome->format,
                               .pictureFolder = m_pictures->folder(),
                               .planned = m_plan.count,
                               .shownAt = m_pictures->shownAt(),
                               .retakes = m_retakes,
                               .matrix = foreignMatrix(workingRecord())};
    write(production.display, Keys::srcPathStr, m_outcome->source);
    write(production.display, Keys::dstPathStr, m_target.dstPath);
    if (m_choices.width > 0)
        write(production.display, Keys::pageWidth, m_choices.width);
    production.isSheetKept = m_isSheetKept;
    production.agreed = m_agreed;
    if (isDiskPictureWanted())
        production.diskPicture = m_target.diskPicturePath;
    if (prefValue(Prefs::prefWebVtt))
        production.preview =
            SeekPreview{.instants = m_plan.instants,
                        .duration = read(workingRecord(), Keys::w_duration).value_or(0),
                        .spritePath = m_target.spriteFile(),
                        .vttPath = m_target.vttFile()};
    return production;
}

void SheetDriver::useProduct(const SheetProduct &product)
{
    again(u"encProcesses"_s);
    if (product.isStopped)
        return;
    const QString sheet = m_target.sheetFile(m_outcome->format);
    if (product.ends.value(sheet) == WriteEnd::State::taken) {
        // Composing is still pending, and comes to the new name.
        takeFreeTarget();
        return;
    }
    prefDeleteChildDico0(RunKeys::processEncDico, Keys::appvgDisplay);
    m_outcome->thumbnails = product.thumbnails;
    m_outcome->missing = m_plan.count - product.thumbnails;
    if (!product.sheet) {
        const QString fault = faultReason(m_pictures->fault());
        const bool isFaultTheReason = product.thumbnails == 0 && !fault.isNull();
        failRow(isFaultTheReason ? fault : product.sheet.reason(), SheetOutcome::Status::failed);
        return;
    }
    m_outcome->status = m_isSheetKept ? SheetOutcome::Status::kept : SheetOutcome::Status::made;
    if (m_isSheetKept)
        m_outcome->reason = localised(u"V_reason_kept"_s);
    m_outcome->sheet = sheet;
    reportSideFiles(product);
    prefWriteChildDico(RunKeys::processEncDico, Keys::dstPathStr, m_outcome->sheet);
}

void SheetDriver::reportSideFiles(const SheetProduct &product)
{
    using State = WriteEnd::State;
    const auto endOf = [&product](const QString &path) {
        return product.ends.value(path, State::failed);
    };
    if (isDiskPictureWanted()) {
        const QString path = m_target.diskPicturePath;
        reportSideFile(path, endOf(path));
        if (endOf(path) != State::failed)
            m_outcome->diskPicture = path;
    }
    if (!prefValue(Prefs::prefWebVtt))
        return;
    // What kept one of the two has kept the other.
    const QString vtt = m_target.vttFile();
    const QString sprite = m_target.spriteFile();
    const QString &decisive = product.ends.contains(vtt) ? vtt : sprite;
    reportSideFile(decisive, endOf(decisive));
    if (endOf(decisive) != State::failed) {
        m_outcome->sprite = sprite;
        m_outcome->vtt = vtt;
    }
}

void SheetDriver::reportSideFile(const QString &path, WriteEnd::State end)
{
    const bool isDiskPicture = path == m_target.diskPicturePath;
    const auto note = [&](const QString &key) { m_outcome->notes += filled(localised(key), path); };
    switch (end) {
    case WriteEnd::State::written:
        if (m_isSheetKept)
            note(u"V_reason_sideMade"_s);
        break;
    case WriteEnd::State::taken:
        if (!m_isSheetKept)
            note(isDiskPicture ? u"V_reason_diskPictureKept"_s : u"V_reason_previewKept"_s);
        break;
    case WriteEnd::State::failed:
        note(isDiskPicture ? u"V_reason_writeDiskPicture"_s : u"V_reason_writePreview"_s);
        m_outcome->isIncomplete = true;
        break;
    }
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
    m_pictures.reset();
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
    const QString site = filled(u"(made by %@)", QString(bundleName).toLower());
    summaryLogAppend(filled(u"   Total speed      : real time / %.2f\ndate                : %@\n%@",
                            speedOf(duration, m_workClock.elapsed()),
                            QDateTime::currentDateTime().toString(u"yyyy-MM-dd HH:mm:ss"_s), site));
}

} // namespace vignar
