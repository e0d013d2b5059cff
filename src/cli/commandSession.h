#pragma once

#include "app/appDelegate.h"
#include "app/signalWatcher.h"
#include "cli/commandLine.h"
#include "cli/sourceArguments.h"
#include "cli/terminal.h"

#include <QObject>

namespace vignar
{

/// Exit statuses of the command line.
enum ExitStatus { allMade = 0, someFailed = 1, wrongArguments = 2 };

/// One command, from its sources to its exit status: a screen without a window in front
/// of the same batch control.
class CommandSession : public QObject, private Outlets
{
    Q_OBJECT

public:
    CommandSession(const CommandLine &line, ProgressLine &progress);

    /// Runs the event loop until the command is done.
    int run();

private:
    // The screen.
    int chosenLayout() const override;
    int chosenFormat() const override;
    QString destinationField() const override;
    void setProgressValue(ProgressBar bar, double value) override;
    void setProgressMaximum(ProgressBar bar, double maximum) override;
    void setActionText(RunnerKind kind, const QString &text) override;
    void setStepsText(const QString &text) override;
    void sourceRefused(const QString &path, const QString &reason) override;
    void analysisEnded() override;
    void sheetFinished(const SheetOutcome &outcome) override;
    void batchEnded() override;

    void beginSources();
    bool isDestinationMissing() const;
    void rowAdded(int index);
    void printPlan(const SourceDico &record);
    void complain(const QString &source, const QString &reason);
    void showProgress();
    void interrupt();
    void quit();

    const CommandLine m_line;
    ProgressLine &m_progress;
    SourceArguments m_arguments;
    SignalWatcher m_signals;
    appDelegate m_application;
    QSet<QString> m_taken;
    bool m_hasFailure = false;
    /// Sheets that are finished, and the name and step of the one being made.
    int m_finished = 0;
    QString m_name;
    QString m_steps;
    double m_stepsMaximum = 0;
    double m_stepsValue = 0;
};

} // namespace vignar
