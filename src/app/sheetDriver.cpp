#include "app/sheetDriver.h"

#include "app/batchList.h"
#include "app/progressReporter.h"
#include "classShared/dates.h"
#include "classShared/files.h"
#include "classShared/lineLog.h"
#include "classShared/paths.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"

#include <QDir>
#include <QFileInfo>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

const QString stepBatch = u"encBatch"_s;
const QString stepProcesses = u"encProcesses"_s;
/// What "encCurrentProcessingFile" holds after a stop, and before row 0.
const QString cancelled = u"cancel"_s;
const QString beforeFirstRow = u"totoCestLePlusBeau"_s;

/// Marks of a row live in its working record; the closing one at the top of the store.
bool isPending(QLatin1String mark)
{
    if (mark == RunKeys::encFin.text)
        return prefRead(RunKeys::encFin).isValid();
    return prefStored(RunKeys::processEncDico).value_or(Dico()).contains(mark);
}

} // namespace

Dico SheetDriver::workingRecord()
{
    return prefStored(RunKeys::processEncDico).value_or(Dico());
}

SheetDriver::SheetDriver(Outlets &outlets, BatchList &batch, ProgressReporter &reporter,
                         QObject *parent)
    : QObject(parent), m_outlets(outlets), m_batch(batch), m_reporter(reporter)
{
    connect(&m_reporter, &ProgressReporter::done, this, [this](RunnerKind kind) {
        if (kind == RunnerKind::main)
            again(stepProcesses);
    });
    connect(&m_batch, &BatchList::rowRemoved, this, [this](int index) {
        if (index < m_row)
            --m_row;
        if (!m_batch.holdsSource(m_next.source()))
            m_next.release();
    });
}

std::span<const Step<SheetDriver>> SheetDriver::steps()
{
    static constexpr Step<SheetDriver> table[] = {
        {Keys::encDeb.text, &SheetDriver::beginRow},
        {Keys::appvgThQt.text, &SheetDriver::runGrabberPass},
        {Keys::appvgThFf.text, &SheetDriver::runFfmpegPass},
        {Keys::appvgDisplay.text, &SheetDriver::compose},
        {Keys::encV.text, &SheetDriver::planAgain},
        {Keys::encQtEnc.text, &SheetDriver::endQuickTimeEncoding},
        {RunKeys::encFin.text, &SheetDriver::closeRow},
    };
    return table;
}

bool SheetDriver::iba_batchGoBt(RowsToMake rows)
{
    return begin([this, rows] {
        if (rows == RowsToMake::all)
            m_batch.resetResultats();
        else
            m_batch.resetUnmade();
    });
}

bool SheetDriver::iba_batchGoBt(const QSet<QString> &sources)
{
    return begin([this, &sources] { m_batch.resetOnly(sources); });
}

bool SheetDriver::begin(const std::function<void()> &resetMarkers)
{
    if (m_isActive || !prepareDestinationFolder())
        return false;
    m_isActive = true;
    sweepDeadParts(destination());
    m_taskStopInt = 0;
    m_taken.clear();
    m_outlets.setGoEnabled(false);
    m_outlets.setStopVisible(RunnerKind::main, true);
    resetMarkers();
    encSend(stepBatch);
    return true;
}

bool SheetDriver::prepareDestinationFolder()
{
    const QString field = expandTilde(m_outlets.destinationField());
    if (!field.isEmpty() && QFileInfo(field).isDir())
        return true;
    // The movie folder is ours to make when it is first needed; any other missing folder
    // may be a disk that is not there, and is for the user to say.
    const QString movies = expandTilde(u"~/Movies/"_s);
    if (field.isEmpty() || QDir::cleanPath(field) == QDir::cleanPath(movies)) {
        m_outlets.setDestinationField(movies);
        return mkdir(movies);
    }
    const QString chosen =
        m_outlets.chooseFolder(filled(localised(u"D_go_dossier_destination1"_s), field), movies);
    if (!chosen.isNull())
        m_outlets.setDestinationField(chosen);
    return !chosen.isNull();
}

void SheetDriver::encSend(const QString &stepName)
{
    logDebug(u"stepNameStr         ? %@", stepName);
    if (!m_isActive)
        return;
    // A step that was on its way when the batch was paused waits as well.
    if (isPaused()) {
        m_deferredStep = stepName;
        return;
    }
    if (stepName == stepBatch)
        takeNextRow();
    else
        takeStep();
}

void SheetDriver::again(const QString &stepName)
{
    if (!m_isActive)
        return;
    if (isPaused()) {
        m_deferredStep = stepName;
        return;
    }
    QMetaObject::invokeMethod(
        this, [this, stepName] { encSend(stepName); }, Qt::QueuedConnection);
}

void SheetDriver::requestStop()
{
    if (!m_isActive)
        return;
    m_taskStopInt = 1;
    m_isPausedByUser = false;
    m_isPausedByIntake = false;
    m_next.release();
    m_blankCheck.cancel();
    m_measuring.cancel();
    m_production.cancel();
    if (m_pictures)
        m_pictures->terminate();
    if (m_reporter.isRunning(RunnerKind::main))
        m_reporter.tasklauncherTerminate(RunnerKind::main);
    if (!m_deferredStep.isEmpty())
        again(std::exchange(m_deferredStep, {}));
}

void SheetDriver::pause()
{
    m_isPausedByUser = true;
    suspendRuns();
}

void SheetDriver::suspendRuns()
{
    m_reporter.tasklauncherSuspend(RunnerKind::main);
    if (m_pictures)
        m_pictures->suspend();
    m_next.suspend();
}

void SheetDriver::resume()
{
    m_isPausedByUser = false;
    if (isPaused())
        return;
    m_reporter.tasklauncherResume(RunnerKind::main);
    if (m_pictures)
        m_pictures->resume();
    m_next.resume();
    if (!m_deferredStep.isEmpty())
        again(std::exchange(m_deferredStep, {}));
}

void SheetDriver::taskToSuspendTemporary(bool isToSuspend)
{
    m_isIntakeBusy = isToSuspend;
    m_isPausedByIntake = isToSuspend && m_isActive;
    if (m_isPausedByIntake)
        suspendRuns();
    else if (!m_isPausedByUser)
        resume();
}

void SheetDriver::takeNextRow()
{
    if (m_taskStopInt == 1) {
        logLine(u"enc stop            = 1");
        endBatch();
        return;
    }
    const bool isRowInProgress = prefRead(RunKeys::encCurrentProcessingFile).isValid();
    const int index =
        m_batch.waitingRow(isRowInProgress ? m_batch.encBatchInprogressRowIdentification() + 1 : 0);
    if (index < 0) {
        endBatch();
        return;
    }
    if (QFileInfo::exists(m_batch.sourcePath(index)))
        startRow(index);
    else
        skipVanishedRow(index);
    again(stepProcesses);
}

void SheetDriver::startRow(int index)
{
    const QString source = m_batch.sourcePath(index);
    Dico record = read(m_batch.row(index), RowKeys::dico).value_or(Dico());
    write(record, Keys::dateCreation, dateCreationStr(source, {}, true));
    write(record, Keys::encDeb, 1);
    m_row = index;
    m_outcome = SheetOutcome{.source = source};
    m_isSheetKept = false;
    m_isDurationMeasured = false;
    m_clock.start();
    m_batch.setResultat(index, Puces::puceCurrent);
    prefWrite(RunKeys::encCurrentProcessingFile, source);
    prefWriteDico(RunKeys::processEncDico, record);
    logDebug(u"processEncDico      - write encDeb ? %d", 1);
}

void SheetDriver::skipVanishedRow(int index)
{
    const QString source = m_batch.sourcePath(index);
    const RowChoices choices = choicesOf(m_batch.row(index));
    logLine(u"current src does not exist anymore (-> skip to next one), current: %@", source);
    m_next.release();
    prefWrite(RunKeys::encCurrentProcessingFile,
              index > 0 ? m_batch.sourcePath(index - 1) : beforeFirstRow);
    m_batch.select(index);
    m_batch.encBatchRemove(false);
    prefWrite(RunKeys::encFin, 1);
    m_outlets.sheetFinished({.source = source,
                             .reason = localised(u"V_reason_missing"_s),
                             .layout = choices.layout,
                             .format = choices.format});
}

void SheetDriver::takeStep()
{
    readChoices();
    settleLastPass();
    const bool isSettled = m_outcome && (m_outcome->status == SheetOutcome::Status::stopped ||
                                         m_outcome->status == SheetOutcome::Status::made);
    if (m_taskStopInt == 1 && m_outcome && !isSettled) {
        m_outcome->status = SheetOutcome::Status::stopped;
        m_outcome->reason = localised(u"V_reason_stopped"_s);
        closeEarly();
    }
    const auto *step = firstPending(steps(), isPending);
    if (!step) {
        logLine(u"enc                 - end");
        return;
    }
    if ((this->*step->perform)() == StepEnd::again)
        again(stepProcesses);
}

void SheetDriver::readChoices()
{
    const Dico record = workingRecord();
    if (!m_outcome || m_row < 0 || contains(record, Keys::out))
        return;
    m_choices = choicesOf(m_batch.row(m_row));
    prefWriteChildDico(RunKeys::processEncDico, Keys::out, m_choices.layout);
    prefWriteChildDico(RunKeys::processEncDico, Keys::dpi, m_choices.width);
    logLine(u"dpi                 = %ld", m_choices.width);
    m_outcome->layout = m_choices.layout;
    m_outcome->format = m_choices.format;
}

void SheetDriver::closeEarly()
{
    for (const auto &step : steps())
        prefDeleteChildDico0(RunKeys::processEncDico, QString(step.mark));
    prefWrite(RunKeys::encFin, 1);
}

StepEnd SheetDriver::failRow(const QString &reason, SheetOutcome::Status status)
{
    m_outcome->status = status;
    m_outcome->reason = reason;
    m_batch.setResultat(m_row, Puces::puceFailure);
    closeEarly();
    return StepEnd::again;
}

void SheetDriver::endBatch()
{
    logLine(u"enc ended           :-)");
    m_next.release();
    prefDelete(RunKeys::processEncDico);
    prefDelete(RunKeys::encFin);
    prefDelete(RunKeys::encCurrentProcessingFile);
    prefDelete(RunKeys::replaceFilesCheck);
    m_isActive = false;
    const bool wasStopped = std::exchange(m_taskStopInt, 0) == 1;
    m_outlets.setStopVisible(RunnerKind::main, false);
    m_outlets.setActionText(RunnerKind::main, {});
    m_outlets.setStepsText({});
    // The end of an intake enables it by itself.
    m_outlets.setGoEnabled(m_batch.count() > 0 && !m_isIntakeBusy);
    if (m_batch.count() > 0 && !wasStopped) {
        const bool isLastFailed = m_batch.resultat(m_batch.count() - 1) == Puces::puceFailure;
        if (isLastFailed || prefValue(Prefs::prefAlertEnd) == 1)
            m_outlets.showSheetNotice(localised(u"D_fin_GUI"_s), {});
        m_outlets.reveal(destination());
    }
    m_outlets.batchEnded();
    Q_EMIT ended();
}

} // namespace vignar
