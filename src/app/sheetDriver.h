#pragma once

#include "app/nextRow.h"
#include "app/outlets.h"
#include "app/rowChoices.h"
#include "app/sheetDestination.h"
#include "app/sheetProduction.h"
#include "app/stepTable.h"
#include "tasks/backgroundRun.h"

#include <QElapsedTimer>
#include <QObject>

#include <functional>
#include <optional>

namespace vignar
{

class BatchList;
class ProgressReporter;
struct RunRequest;

/// The rows that a batch run takes; those that join the list meanwhile always are.
enum class RowsToMake {
    all,
    /// Those without a sheet: waiting, failed and stopped ones.
    unmade
};

/// Walks the rows of the batch list through the making of their sheets, one step a
/// call. Marks and working record live in the preference store.
class SheetDriver : public QObject
{
    Q_OBJECT

public:
    SheetDriver(Outlets &outlets, BatchList &batch, ProgressReporter &reporter,
                QObject *parent = nullptr);

    /// The go button: checks the destination, resets the markers of the rows to make and
    /// starts. False when there is no destination, or a batch is running.
    bool iba_batchGoBt(RowsToMake rows = RowsToMake::all);
    /// The same for the rows of these sources, whatever became of them before.
    bool iba_batchGoBt(const QSet<QString> &sources);

    /// "encBatch" takes the next row, "encProcesses" the next step of the current one.
    void encSend(const QString &stepName);

    void requestStop();
    void pause();
    void resume();
    /// Pauses for the time of an intake, and goes on unless the user has paused.
    void taskToSuspendTemporary(bool isToSuspend);

    bool isActive() const { return m_isActive; }
    bool isPaused() const { return m_isPausedByUser || m_isPausedByIntake; }

    /// The marks in the order in which the steps of a row are taken.
    static std::span<const Step<SheetDriver>> steps();

    /// The planning input of a source for a layout: its record and what the preferences
    /// ask for.
    static SourceDico planningInput(const SourceDico &source, int layout);

    /// Folder in which sheets are made now, from the destination field.
    QString destination() const;

    /// Where a source's sheet goes, the names in taken being used already; its own join
    /// them.
    SheetTarget plannedTarget(const SourceDico &source, QSet<QString> &taken) const;

Q_SIGNALS:
    /// The passes of the row after the one being made have been started.
    void aheadBegun();
    /// The batch is over, by itself or stopped.
    void ended();

private:
    // Steps of a row.
    StepEnd beginRow();
    StepEnd runGrabberPass();
    StepEnd runFfmpegPass();
    StepEnd compose();
    StepEnd planAgain();
    StepEnd endQuickTimeEncoding();
    StepEnd closeRow();
    static Dico workingRecord();
    void again(const QString &stepName);
    bool begin(const std::function<void()> &resetMarkers);
    bool prepareDestinationFolder();
    void takeNextRow();
    void skipVanishedRow(int index);
    void startRow(int index);
    void takeStep();
    void closeEarly();
    void endBatch();
    void readChoices();
    void settleLastPass();
    StepEnd runAllPasses();
    bool isDurationDoubtful() const;
    void measureDuration();
    void useMeasured(std::optional<double> seconds);
    Result<void> planMeasured(double seconds);
    void passesEnded();
    void showLanded(int pictures);
    void showStep(int pictures);
    void suspendRuns();
    Result<void> prepareRow();
    Result<void> settleNames();
    Result<void> keepSheet();
    void setTarget(const SheetTarget &target);
    SheetTarget furtherTarget();
    void takeFreeTarget();
    Result<void> takeFolder();
    SheetPlan plannedSheet() const;
    Result<void> usePlan(const SheetPlan &plan);
    void beginNextRow();
    StepEnd failRow(const QString &reason, SheetOutcome::Status status);
    void takeBlanksAgain(const BlankCheck &check);
    SheetProduction production() const;
    void useProduct(const SheetProduct &product);
    void reportSideFiles(const SheetProduct &product);
    void reportSideFile(const QString &path, WriteEnd::State end);
    void finishRow();
    void writeSummary() const;
    void startRun(const RunRequest &request);

    Outlets &m_outlets;
    BatchList &m_batch;
    ProgressReporter &m_reporter;
    bool m_isActive = false;
    int m_taskStopInt = 0;
    bool m_isPausedByUser = false;
    bool m_isPausedByIntake = false;
    bool m_isIntakeBusy = false;
    /// A step that became due while paused.
    QString m_deferredStep;
    /// Paths that this run has written or is about to, for sources of the same name.
    QSet<QString> m_taken;

    // The row being made; meaningful while m_outcome holds one.
    std::optional<SheetOutcome> m_outcome;
    int m_row = -1;
    RowChoices m_choices;
    SheetTarget m_target;
    /// Files of it that may be replaced.
    Agreements m_agreed;
    /// The sheet is there and stays; what goes with it is missing.
    bool m_isSheetKept = false;
    std::unique_ptr<RowPictures> m_pictures;
    /// They have been taken, or begun, ahead of the row's turn.
    bool m_isBegunAhead = false;
    ThumbnailPlan m_plan;
    BlankRetakes m_retakes;
    bool m_areBlanksSettled = false;
    /// Once a row, whatever comes of it.
    bool m_isDurationMeasured = false;
    QString m_lastPassKey;
    QStringList m_lastPass;
    /// Since its turn came, and since there was nothing more to ask.
    QElapsedTimer m_clock;
    QElapsedTimer m_workClock;
    NextRow m_next;
    // Last, so that their threads have ended before anything else goes.
    BackgroundRun<BlankCheck> m_blankCheck;
    BackgroundRun<SheetProduct> m_production;
    BackgroundRun<std::optional<double>> m_measuring;
};

} // namespace vignar
