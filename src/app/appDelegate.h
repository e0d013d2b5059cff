#pragma once

#include "app/analysisDriver.h"
#include "app/batchList.h"
#include "app/intake.h"
#include "app/progressReporter.h"
#include "app/sheetDriver.h"

#include <QObject>

#include <memory>

namespace vignar
{

/// Owns the parts of the batch control and wires them to each other. A program makes
/// one after its preference store, logs and work folder are set up.
class appDelegate : public QObject
{
    Q_OBJECT

public:
    explicit appDelegate(Outlets &outlets, std::unique_ptr<MovieFramework> movieFramework =
                                               makeAbsentMovieFramework());
    ~appDelegate() override;

    BatchList &whichArrayController() { return m_batch; }
    SheetDriver &sheetDriver() { return m_sheetDriver; }
    AnalysisDriver &analysisDriver() { return m_analysisDriver; }

    /// Clears what a run that did not end left in the store.
    static void clearWorkingKeys();

    void draggedFiles(const QStringList &paths, FoldersTaken folders = FoldersTaken::first);
    /// As draggedFiles(), after the current turn of the event loop, so that a file opened
    /// at launch finds the program ready.
    void applicationOpenFiles(const QStringList &paths, FoldersTaken folders = FoldersTaken::first);
    /// Drops are being searched, or their sources analysed.
    bool isTakingSources() const { return m_intake.isBusy(); }
    /// All that was brought and is neither row nor refused nor given up yet, in its order; the
    /// items of a drop that is still being searched stand for what is in it.
    QStringList unfinishedSources() const;

    /// False when there is no destination, or a batch is running.
    bool iba_batchGoBt(RowsToMake rows = RowsToMake::all);
    bool iba_batchGoBt(const QSet<QString> &sources);
    void iba_taskStopBt(RunnerKind kind);
    void iba_taskPauseBt(bool isToPause);

    /// True when the program may quit; a running batch is asked about. What an analysis has
    /// not got to is for the program to keep.
    bool isCloseQuit() const;

    /// Stops everything at once; nothing runs any more when batchEnded() or, without a
    /// batch, ended() of the analysis has come.
    void stopAll();

private:
    void performOpenFiles(const QStringList &paths, FoldersTaken folders);
    void stopAnalysis();

    Outlets &m_outlets;
    std::unique_ptr<MovieFramework> m_movieFramework;
    BatchList m_batch;
    ProgressReporter m_reporter;
    AnalysisDriver m_analysisDriver;
    Intake m_intake;
    SheetDriver m_sheetDriver;
    QList<QStringList> m_waitingToOpen;
};

} // namespace vignar
