#include "cli/commandSession.h"

#include "classShared/format.h"
#include "cli/jsonLines.h"
#include "cli/recordText.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "sheet/extractionFolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace vignar
{

using namespace Qt::StringLiterals;

using Command = CommandLine::Command;

CommandSession::CommandSession(const CommandLine &line, ProgressLine &progress)
    : m_line(line),
      m_progress(progress),
      m_arguments(expandSources(line.sources)),
      m_application(*this)
{
    connect(&m_signals, &SignalWatcher::interrupted, this, &CommandSession::interrupt);
    connect(&m_application.whichArrayController(), &BatchList::rowAdded, this,
            &CommandSession::rowAdded);
    if (line.existing != CommandLine::Existing::ask)
        prefWrite(RunKeys::replaceFilesCheck,
                  line.existing == CommandLine::Existing::replace ? 1 : 0);
}

int CommandSession::run()
{
    for (const RefusedArgument &refused : m_arguments.refused)
        sourceRefused(refused.source, refused.reason);
    if (!m_arguments.files.isEmpty()) {
        QMetaObject::invokeMethod(this, &CommandSession::beginSources, Qt::QueuedConnection);
        QCoreApplication::exec();
    }
    m_progress.clear();
    if (m_signals.isInterrupted())
        return interruptedStatus;
    return m_hasFailure ? someFailed : allMade;
}

void CommandSession::beginSources()
{
    if (m_line.command == Command::sheet && isDestinationMissing()) {
        const QString reason =
            filled(localised(u"V_reason_destination"_s), QDir::cleanPath(destinationField()));
        for (const QString &source : m_arguments.files)
            sheetFinished({.source = source, .reason = reason});
        quit();
        return;
    }
    m_application.draggedFiles(m_arguments.files);
}

bool CommandSession::isDestinationMissing() const
{
    return !m_line.destination.isEmpty() && !QFileInfo(m_line.destination).isDir();
}

int CommandSession::chosenLayout() const
{
    return m_line.layout.value_or(prefValue(Prefs::prefCheckMatrix));
}

int CommandSession::chosenFormat() const
{
    return m_line.format.value_or(prefValue(Prefs::prefDpi));
}

QString CommandSession::destinationField() const
{
    return m_line.destination.isEmpty() ? prefValue(Prefs::prefDefautDstPathStr)
                                        : QDir::current().absoluteFilePath(m_line.destination);
}

void CommandSession::setProgressMaximum(ProgressBar bar, double maximum)
{
    if (bar != ProgressBar::steps)
        return;
    m_stepsMaximum = maximum;
    m_stepsValue = 0;
}

void CommandSession::setProgressValue(ProgressBar bar, double value)
{
    if (bar == ProgressBar::steps)
        m_stepsValue = value;
}

void CommandSession::setActionText(RunnerKind kind, const QString &text)
{
    if (kind == RunnerKind::analysis) {
        m_progress.show(text);
        return;
    }
    const bool isNewName = text != m_name;
    m_name = text;
    if (isNewName && !text.isEmpty() && !m_progress.isTerminal())
        m_progress.print(u"[%1/%2] %3"_s.arg(m_finished + 1)
                             .arg(m_application.whichArrayController().count())
                             .arg(text));
    showProgress();
}

void CommandSession::setStepsText(const QString &text)
{
    m_steps = text;
    showProgress();
}

void CommandSession::showProgress()
{
    if (m_name.isEmpty())
        return;
    const int percent = m_stepsMaximum > 0 ? int(100 * m_stepsValue / m_stepsMaximum) : 0;
    m_progress.show(u"[%1/%2] %3 %4% %5"_s.arg(m_finished + 1)
                        .arg(m_application.whichArrayController().count())
                        .arg(m_steps)
                        .arg(percent, 3)
                        .arg(m_name));
}

void CommandSession::complain(const QString &source, const QString &reason)
{
    m_hasFailure = true;
    m_progress.print(u"vignar-cli: %1: %2"_s.arg(source, reason));
}

void CommandSession::sourceRefused(const QString &path, const QString &reason)
{
    complain(path, reason);
    if (m_line.isJson)
        printResult(m_line.command == Command::sheet ? refusedSheetJson(path, reason)
                                                     : refusedAnalysisJson(path, reason));
}

void CommandSession::rowAdded(int index)
{
    const BatchEntry row = m_application.whichArrayController().row(index);
    SourceDico record = read(row, RowKeys::dico).value_or(Dico());
    m_progress.clear();
    if (m_line.command == Command::plan) {
        printPlan(record);
    } else if (m_line.command == Command::analyse) {
        // The poster is a scratch file that is gone when the reader sees this.
        remove(record, Keys::imgPathStr);
        printResult(m_line.isJson ? analysedJson(record) : recordText(record));
    }
}

void CommandSession::printPlan(const SourceDico &record)
{
    const QString source = readStr(record, Keys::srcPathStr);
    const SheetTarget target = m_application.sheetDriver().plannedTarget(record, m_taken);
    const int layout = chosenLayout();
    const SheetPlan plan = planSheet(layout, SheetDriver::planningInput(record, layout),
                                     plannedExtractionFolder(target.dstPath));
    printResult(m_line.isJson ? planJson(source, layout, plan) : planText(source, layout, plan));
}

void CommandSession::analysisEnded()
{
    const bool isBatchWanted = m_line.command == Command::sheet &&
                               m_application.whichArrayController().count() > 0 &&
                               !m_signals.isInterrupted();
    if (!isBatchWanted || !m_application.iba_batchGoBt())
        quit();
}

void CommandSession::sheetFinished(const SheetOutcome &outcome)
{
    ++m_finished;
    using Status = SheetOutcome::Status;
    if (outcome.status == Status::made && outcome.missing > 0)
        m_progress.print(
            u"vignar-cli: %1: %2 of %3 thumbnails could not be extracted"_s.arg(outcome.source)
                .arg(outcome.missing)
                .arg(outcome.missing + outcome.thumbnails));
    if (outcome.status == Status::made && outcome.isDiskPictureKept)
        m_progress.print(u"vignar-cli: %1: %2"_s.arg(
            outcome.source, filled(localised(u"V_reason_diskPictureKept"_s), outcome.diskPicture)));
    if (outcome.status == Status::made && !outcome.previewNote.isEmpty())
        m_progress.print(u"vignar-cli: %1: %2"_s.arg(outcome.source, outcome.previewNote));
    if (outcome.status == Status::kept)
        m_progress.print(u"vignar-cli: %1: %2"_s.arg(outcome.source, outcome.reason));
    else if (outcome.status != Status::made)
        complain(outcome.source, outcome.reason);
    m_progress.clear();
    if (m_line.isJson)
        printResult(sheetJson(outcome));
    else if (!outcome.sheet.isEmpty())
        printResult(outcome.sheet);
}

void CommandSession::batchEnded()
{
    quit();
}

void CommandSession::interrupt()
{
    m_progress.clear();
    m_application.stopAll();
    if (!m_application.sheetDriver().isActive() && !m_application.analysisDriver().isActive())
        quit();
}

void CommandSession::quit()
{
    // Queued: the drivers are still on the call stack.
    QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
}

} // namespace vignar
