#pragma once

#include "app/appDelegate.h"
#include "app/signalWatcher.h"
#include "cli/commandScreen.h"
#include "cli/workerChannel.h"

#include <QObject>

#include <memory>

namespace vignar
{

/// A worker process: takes one source after another from the program that has started it,
/// and does what the command says with each. It prints and asks nothing itself.
class Worker : public QObject, private CommandScreen
{
    Q_OBJECT

public:
    explicit Worker(const CommandLine &line);
    ~Worker() override;

    /// Runs the event loop until the program closes the channel or says to stop.
    int run();

private:
    void setProgressValue(ProgressBar bar, double value) override;
    void setProgressMaximum(ProgressBar bar, double maximum) override;
    int furtherNumber(const QString &source, int number) override;
    void sourceRefused(const QString &path, const QString &reason) override;
    void analysisEnded() override;
    void sheetFinished(const SheetOutcome &outcome) override;
    void batchEnded() override;

    void told(const Dico &message);
    void take(const QString &source);
    void rowAdded(int index);
    void make(int number);
    void stop();
    void done();
    void quit();

    SignalWatcher m_signals;
    WorkerChannel m_channel;
    /// One for each source, so that none inherits from another.
    std::unique_ptr<appDelegate> m_application;
    bool m_hasSource = false;
    bool m_isStopping = false;
    int m_planned = 0;
};

} // namespace vignar
