#include "app/sheetDriver.h"

#include "app/batchList.h"
#include "app/progressReporter.h"
#include "app/sheetDisplay.h"
#include "classShared/lineLog.h"
#include "settings/applicationPlaces.h"
#include "settings/logFiles.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "sheet/diskPicture.h"
#include "sheet/extractionPasses.h"
#include "sheet/pictureMatrix.h"
#include "sheet/pictureTimes.h"
#include "sheet/seekPreview.h"
#include "sheet/sheetComposer.h"

#include <QDateTime>
#include <QFileInfo>
#include <QThreadPool>

namespace vignar
{

using namespace Qt::StringLiterals;

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
    m_lastPassKey = *lowest;
    m_lastPass = passes.take(m_lastPassKey).toStringList();
    if (passes.isEmpty()) {
        prefDeleteChildDico0(RunKeys::processEncDico, Keys::appvgThFf);
        logDebug(u"RAZ [md count]==%lu, new dico processEncDico > appvgThFf : %@", passes.size(),
                 passes);
    } else {
        prefWriteChildDico(RunKeys::processEncDico, Keys::appvgThFf, passes);
    }
    showLanded(m_lastPassKey.toInt() + 1);
    startRun({m_lastPass, 0, parseIndeterminate, RunnerKind::main});
    return StepEnd::running;
}

PassMap SheetDriver::takePasses()
{
    PassMap passes;
    const Dico stored = read(workingRecord(), Keys::appvgThFf).value_or(Dico());
    for (auto pass = stored.cbegin(); pass != stored.cend(); ++pass)
        passes.emplace(pass.key().toInt(), pass->toStringList());
    prefDeleteChildDico0(RunKeys::processEncDico, Keys::appvgThFf);
    return passes;
}

StepEnd SheetDriver::runAllPasses()
{
    m_outlets.setActionText(RunnerKind::main, QFileInfo(m_outcome->source).fileName());
    m_outlets.setWheelSpinning(RunnerKind::main, true);
    m_outlets.setProgressMaximum(ProgressBar::main, m_planned);
    showLanded(0);
    m_executor.start(takePasses(), workingRecord());
    return StepEnd::running;
}

void SheetDriver::showLanded(int pictures)
{
    // All have been there already.
    if (m_retakes.isUnderWay())
        return;
    m_outlets.setProgressValue(ProgressBar::steps, pictures);
    m_outlets.setStepsText(
        filled(u"%@ %ld/%ld", localisedCapitalised(u"th"_s), pictures, m_planned));
}

void SheetDriver::settleLastPass()
{
    if (m_lastPass.isEmpty())
        return;
    const QStringList pass = std::exchange(m_lastPass, {});
    if (m_taskStopInt == 1)
        return;
    if (QFileInfo(pass.constLast()).size() > 0) {
        const QString report = m_reporter.lastWords(RunnerKind::main);
        if (const auto seconds = toldTime(report, pass, m_lastPassKey.toInt()))
            m_shownAt[pass.constLast()] = *seconds;
        return;
    }
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

bool SheetDriver::takeBlanksAgain()
{
    const SourceDico source = planningInput(workingRecord(), m_layout);
    if (!prefValue(Prefs::prefAvoidBlank) || usesMovieGrabber(source))
        return false;
    const Dico passes = m_retakes.nextRound(source);
    if (!passes.isEmpty())
        prefWriteChildDico(RunKeys::processEncDico, Keys::appvgThFf, passes);
    return !passes.isEmpty();
}

void SheetDriver::correctColours() const
{
    const auto matrix = foreignMatrix(workingRecord());
    if (!matrix)
        return;
    QThreadPool threads;
    for (const QString &picture : extractedPictures(m_folder.path))
        threads.start([picture, matrix] { convertToJpegMatrix(picture, *matrix); });
    threads.waitForDone();
}

StepEnd SheetDriver::compose()
{
    if (takeBlanksAgain())
        return StepEnd::again;
    correctColours();
    const Dico display = displayOfSheet();
    prefDeleteChildDico0(RunKeys::processEncDico, Keys::appvgDisplay);
    m_outcome->thumbnails =
        static_cast<int>(read(display, Keys::th).value_or(QStringList()).size());
    m_outcome->missing = m_planned - m_outcome->thumbnails;
    if (m_outcome->thumbnails == 0)
        return failRow(localised(u"V_reason_noThumbnail"_s), SheetOutcome::Status::failed);
    const Result<void> composed = composeSheet(display, m_outcome->format);
    if (!composed)
        return failRow(composed.reason(), SheetOutcome::Status::failed);
    m_outcome->sheet = m_target.sheetFile(m_outcome->format);
    m_outcome->status = SheetOutcome::Status::made;
    makeDiskPicture(m_folder.path);
    makeSeekPreview(display);
    prefWriteChildDico(RunKeys::processEncDico, Keys::dstPathStr, m_outcome->sheet);
    return StepEnd::again;
}

Dico SheetDriver::displayOfSheet() const
{
    Dico display =
        sheetDisplay(read(workingRecord(), Keys::appvgDisplay).value_or(Dico()), m_layout);
    write(display, Keys::srcPathStr, m_outcome->source);
    write(display, Keys::dstPathStr, m_target.dstPath);
    write(display, Keys::th, extractedPictures(m_folder.path));
    if (contains(display, Keys::timecode))
        write(display, Keys::timecode, timecodesOfPictures(display));
    if (m_dpi > 0)
        write(display, Keys::pageWidth, m_dpi);
    return display;
}

Dico SheetDriver::timecodesOfPictures(const Dico &display) const
{
    Dico timecodes = read(display, Keys::timecode).value_or(Dico());
    // Hundredths are cut off, and a time that was told comes out of two roundings.
    constexpr double rounding = 0.001;
    const auto show = [&timecodes](int index, double seconds) {
        timecodes.insert(QString::number(index), timecodeText(seconds + rounding));
    };
    for (int index = 0; index < m_planned; ++index) {
        const QString picture = thumbnailPath(m_folder.path, index);
        if (m_shownAt.contains(picture))
            show(index, m_shownAt.value(picture));
    }
    for (const auto &[index, instant] : m_retakes.replaced())
        show(index, m_shownAt.value(m_retakes.furtherPath(index), instant));
    return timecodes;
}

void SheetDriver::makeDiskPicture(const QString &pictureFolder)
{
    if (!isDiskPictureWanted())
        return;
    if (m_outcome->isDiskPictureKept ||
        multimediaDiskThumb(pictureFolder, m_target.diskPicturePath))
        m_outcome->diskPicture = m_target.diskPicturePath;
}

void SheetDriver::makeSeekPreview(const Dico &display)
{
    if (!prefValue(Prefs::prefWebVtt))
        return;
    const bool isKept = !m_outcome->previewNote.isNull();
    const SeekPreview preview{
        .pictures = read(display, Keys::th).value_or(QStringList()),
        .instants = m_instants,
        .duration = read(workingRecord(), Keys::w_duration).value_or(0),
        .pictureSize = {read(display, Keys::wTh).value_or(0), read(display, Keys::hTh).value_or(0)},
        .spritePath = m_target.spriteFile(),
        .vttPath = m_target.vttFile()};
    if (const auto written = isKept ? Result<void>() : writeSeekPreview(preview); !written) {
        m_outcome->previewNote = written.reason();
        return;
    }
    m_outcome->sprite = preview.spritePath;
    m_outcome->vtt = preview.vttPath;
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
