#include "cli/commandSession.h"

#include "app/sheetDisplay.h"
#include "sheet/extractionFolder.h"

#include <QCoreApplication>

namespace vignar
{

using namespace Qt::StringLiterals;

using Command = CommandLine::Command;

CommandSession::CommandSession(const CommandLine &line, ProgressLine &progress, Results &results,
                               const QStringList &sources)
    : CommandScreen(line),
      m_progress(progress),
      m_results(results),
      m_sources(sources),
      m_application(*this)
{
    connect(&m_signals, &SignalWatcher::interrupted, this, &CommandSession::interrupt);
    connect(&m_application.whichArrayController(), &BatchList::rowAdded, this,
            &CommandSession::rowAdded);
    answerReplaceQuestion();
}

bool CommandSession::run()
{
    const auto begin = [this] { m_application.draggedFiles(m_sources); };
    QMetaObject::invokeMethod(this, begin, Qt::QueuedConnection);
    QCoreApplication::exec();
    m_progress.clear();
    return !m_signals.isInterrupted();
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

void CommandSession::sourceRefused(const QString &path, const QString &reason)
{
    m_results.refused(m_results.positionOf(path), path, reason);
}

void CommandSession::rowAdded(int index)
{
    const BatchEntry row = m_application.whichArrayController().row(index);
    const SourceDico record = read(row, RowKeys::dico).value_or(Dico());
    const size_t position = m_results.positionOf(readStr(record, Keys::srcPathStr));
    m_progress.clear();
    if (line().command == Command::plan)
        m_results.planned(position, planned(row));
    else if (line().command == Command::analyse)
        m_results.printed(position, analysisResult(record));
}

PlannedSource CommandSession::planned(const BatchEntry &row)
{
    const SourceDico record = read(row, RowKeys::dico).value_or(Dico());
    const RowChoices choices = choicesOf(row);
    const SheetTarget target = m_application.sheetDriver().plannedTarget(record, m_taken);
    PlannedSource planned{readStr(record, Keys::srcPathStr), choices.layout, {}, {}};
    planned.plan = planSheet(choices.layout, SheetDriver::planningInput(record, choices.layout),
                             plannedExtractionFolder(target.dstPath));
    if (const Result<void> possible = checkedPlan(planned.plan, choices); !possible)
        planned.reason = possible.reason();
    return planned;
}

void CommandSession::analysisEnded()
{
    const bool isBatchWanted = line().command == Command::sheet &&
                               m_application.whichArrayController().count() > 0 &&
                               !m_signals.isInterrupted();
    if (isBatchWanted && m_application.iba_batchGoBt())
        return;
    if (isBatchWanted)
        failAllRows();
    quit();
}

void CommandSession::failAllRows()
{
    const BatchList &batch = m_application.whichArrayController();
    for (int index = 0; index < batch.count(); ++index)
        sheetFinished(destinationFailure(batch.sourcePath(index)));
}

void CommandSession::sheetFinished(const SheetOutcome &outcome)
{
    ++m_finished;
    // The next one may bear the same name.
    m_name.clear();
    m_results.finished(m_results.positionOf(outcome.source), outcome);
}

void CommandSession::batchEnded()
{
    quit();
}

void CommandSession::interrupt()
{
    m_progress.clear();
    m_application.stopAll();
    if (!m_application.sheetDriver().isActive() && !m_application.isTakingSources())
        quit();
}

void CommandSession::quit()
{
    // Queued: the drivers are still on the call stack.
    QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
}

} // namespace vignar
