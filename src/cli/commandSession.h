#pragma once

#include "app/appDelegate.h"
#include "app/signalWatcher.h"
#include "cli/commandScreen.h"
#include "cli/results.h"
#include "cli/terminal.h"

#include <QObject>

namespace vignar
{

/// One command whose sources are worked on one after another in this process: a screen
/// without a window in front of the same batch control.
class CommandSession : public QObject, private CommandScreen
{
    Q_OBJECT

public:
    CommandSession(const CommandLine &line, ProgressLine &progress, Results &results,
                   const QStringList &sources);

    /// Runs the event loop until the command is done; false when it was interrupted.
    bool run();

private:
    // The screen.
    void setProgressValue(ProgressBar bar, double value) override;
    void setProgressMaximum(ProgressBar bar, double maximum) override;
    void setActionText(RunnerKind kind, const QString &text) override;
    void setStepsText(const QString &text) override;
    void sourceRefused(const QString &path, const QString &reason) override;
    void analysisEnded() override;
    void sheetFinished(const SheetOutcome &outcome) override;
    void batchEnded() override;

    void rowAdded(int index);
    void failAllRows();
    PlannedSource planned(const BatchEntry &row);
    void showProgress();
    void interrupt();
    void quit();

    ProgressLine &m_progress;
    Results &m_results;
    const QStringList m_sources;
    SignalWatcher m_signals;
    appDelegate m_application;
    QSet<QString> m_taken;
    /// Sheets that are finished, and the name and step of the one being made.
    int m_finished = 0;
    QString m_name;
    QString m_steps;
    double m_stepsMaximum = 0;
    double m_stepsValue = 0;
};

} // namespace vignar
