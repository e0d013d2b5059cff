#pragma once

#include "analysis/sourceAnalysis.h"
#include "app/outlets.h"
#include "app/rowMaker.h"
#include "app/stepTable.h"
#include "tasks/backgroundRun.h"

#include <QObject>

namespace vignar
{

class BatchList;
class ProgressReporter;

/// Walks the pending sources through the analysis, one step a call, and turns each into
/// a row of the batch list. Marks and paths live in the preference store.
///
/// What takes time happens in tool runs and on other threads. The poster of one source is
/// made while the next one is probed; rows and refusals come in the order of the sources.
class AnalysisDriver : public QObject
{
    Q_OBJECT

public:
    AnalysisDriver(Outlets &outlets, BatchList &batch, ProgressReporter &reporter,
                   AnalysisReaders readers, QObject *parent = nullptr);

    /// Begins with the pending sources; does nothing while they are being walked.
    void start();

    /// Gives up the source at hand and those that wait.
    void requestStop();

    bool isActive() const { return m_isActive; }

    /// The source that only its poster keeps from being a row; null: none.
    QString sourceInTheMaking() const { return m_rowMaker.source(); }

    /// The marks in the order in which they are taken.
    static std::span<const Step<AnalysisDriver>> steps();

    /// The end of the analysis runner's run.
    void analysis();

Q_SIGNALS:
    /// No source is pending any more.
    void ended();

private:
    struct ReadSource {
        Result<SourceDico> record;
        QList<SourceNotice> notices;
    };

    // Steps.
    StepEnd begin();
    StepEnd startProbe();
    StepEnd testResult();
    StepEnd judgeReport();
    StepEnd startMediaInfo();
    StepEnd takeMediaInfo();
    StepEnd buildRecord();
    StepEnd finish();

    static void setMark(QLatin1String mark);
    void again();
    void stop();
    void closeEarly();
    void takeNextSource();
    void showSource();
    void refuse(const QString &reason);
    void takeRecord(const ReadSource &read);
    void startRow();
    void rowEnded(const QString &source);
    void waitForRow();
    QString report() const;
    bool isReportOfSuccess() const;

    Outlets &m_outlets;
    ProgressReporter &m_reporter;
    AnalysisReaders m_readers;
    bool m_isActive = false;
    int m_analysisStopInt = 0;
    int m_taken = 0;
    /// This ffmpeg can write decoded frames to a file.
    bool m_canWriteFrames = true;
    /// The last step waits until the row at hand is there.
    bool m_isWaitingForRow = false;
    RowMaker m_rowMaker;
    BackgroundRun<ReadSource> m_reading;
};

} // namespace vignar
