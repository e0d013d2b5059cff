#pragma once

#include "app/outlets.h"
#include "app/passExecutor.h"
#include "app/sheetDestination.h"
#include "app/stepTable.h"
#include "classShared/result.h"
#include "sheet/blankPictures.h"
#include "sheet/extractionFolder.h"

#include <QElapsedTimer>
#include <QHash>
#include <QObject>

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
    void enc(const QString &stepName);
    void again(const QString &stepName);
    bool prepareDestinationFolder();
    void takeNextRow();
    void skipVanishedRow(int index);
    void startRow(int index);
    void takeStep();
    void closeEarly();
    void endBatch();
    void readChoices();
    void settleLastPass();
    PassMap takePasses();
    StepEnd runAllPasses();
    void showLanded(int pictures);
    void suspendRuns();

    Result<void> prepareRow();
    Result<void> prepareFolder();
    Result<void> askToReplace(const SheetTarget &target);
    void askToReplacePreview(const SheetTarget &target);
    bool mayReplace(const QString &path);
    Result<void> checkSpace() const;
    Result<void> planRow();
    StepEnd failRow(const QString &reason, SheetOutcome::Status status);
    bool takeBlanksAgain();
    void correctColours() const;
    Dico displayOfSheet() const;
    Dico timecodesOfPictures(const Dico &display) const;
    void makeDiskPicture(const QString &pictureFolder);
    void makeSeekPreview(const Dico &display);
    void finishRow();
    void writeSummary() const;
    void startRun(const RunRequest &request);

    Outlets &m_outlets;
    BatchList &m_batch;
    ProgressReporter &m_reporter;
    PassExecutor m_executor;

    bool m_isActive = false;
    int m_taskStopInt = 0;
    bool m_isPausedByUser = false;
    bool m_isPausedByIntake = false;
    /// A step that became due while paused.
    QString m_deferredStep;
    /// Paths that this run has written or is about to, for sources of the same name.
    QSet<QString> m_taken;

    // The row being made; meaningful while m_outcome holds one.
    std::optional<SheetOutcome> m_outcome;
    int m_row = -1;
    int m_layout = mixLayout;
    int m_dpi = 0;
    SheetTarget m_target;
    ExtractionFolder m_folder;
    int m_planned = 0;
    std::vector<double> m_instants;
    BlankRetakes m_retakes;
    QHash<QString, double> m_shownAt; // picture file to seconds, as far as told
    QString m_lastPassKey;
    QStringList m_lastPass;
    QElapsedTimer m_clock;
};

} // namespace vignar
