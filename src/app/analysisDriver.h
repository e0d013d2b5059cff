#pragma once

#include "analysis/sourceAnalysis.h"
#include "app/outlets.h"
#include "app/stepTable.h"

#include <QObject>

namespace vignar
{

class BatchList;
class ProgressReporter;

/// Walks the pending sources through the analysis, one step a call, and turns each into
/// a row of the batch list. Its whole state is the marks and paths in the preference
/// store.
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

    /// The marks in the order in which they are taken.
    static std::span<const Step<AnalysisDriver>> steps();

    /// The end of the analysis runner's run.
    void analysis();

Q_SIGNALS:
    /// No source is pending any more.
    void ended();

private:
    // Steps.
    StepEnd begin();
    StepEnd startProbe();
    StepEnd testResult();
    StepEnd judgeReport();
    StepEnd startMediaInfo();
    StepEnd takeMediaInfo();
    StepEnd buildRecord();
    StepEnd finish();

    void again();
    void stop();
    void closeEarly();
    void takeNextSource();
    void showSource();
    void refuse(const QString &reason);
    void storeRow();
    QString report() const;
    bool isReportOfSuccess() const;

    Outlets &m_outlets;
    BatchList &m_batch;
    ProgressReporter &m_reporter;
    AnalysisReaders m_readers;
    bool m_isActive = false;
    int m_analysisStopInt = 0;
    int m_taken = 0;
    /// This ffmpeg can write decoded frames to a file.
    bool m_canWriteFrames = true;
};

} // namespace vignar
