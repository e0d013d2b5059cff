#pragma once

#include "analysis/sourceAnalysis.h"
#include "app/outlets.h"
#include "app/rowMaker.h"
#include "app/sourceQueue.h"
#include "app/stepTable.h"
#include "tasks/backgroundRun.h"

#include <QObject>

#include <optional>

namespace vignar
{

class BatchList;
class ProgressReporter;

/// The source being analysed, with all that is known of it so far. "analysisSrcPathStr",
/// "analysisSrcCurrentDico" and "imgPathStr" are printed from it.
struct SourceAtHand {
    QString path;
    std::optional<SourceDico> record;
    QString posterPath;
    /// Of several video streams one has been chosen to be probed; null: the one that ffmpeg takes.
    bool isStreamChosen = false;
    std::optional<int> stream = {};
};

/// The sources that a drop does not bring a second time.
struct KnownSources {
    QHash<QString, int> rows;
    /// The one in the making and the one at hand.
    QStringList underWay;
    QSet<QString> waiting;

    bool contains(const QString &path) const
    {
        return rows.contains(path) || underWay.contains(path) || waiting.contains(path);
    }
};

/// Walks the pending sources through the analysis, one step a call, and turns each into
/// a row of the batch list. The marks of the steps live in the preference store.
///
/// What takes time happens in tool runs and on other threads. The poster of one source is
/// made while the next one is probed; rows and refusals come in the order of the sources.
///
/// Sources may be brought at any time: they join the queue and disturb nothing
/// (docs/decisions/drops-during-analysis.md).
class AnalysisDriver : public QObject
{
    Q_OBJECT

public:
    AnalysisDriver(Outlets &outlets, BatchList &batch, ProgressReporter &reporter,
                   AnalysisReaders readers, QObject *parent = nullptr);

    /// New sources join the queue, and the analysis begins unless it is under way. They must
    /// not be known.
    void take(const QStringList &sources, const QSet<QString> &sourceSet);

    /// Gives up the source at hand, the one in the making and those that wait now.
    void requestStop();

    bool isActive() const { return m_isActive; }

    /// The source being analysed; null: none.
    QString sourceAtHand() const { return m_atHand ? m_atHand->path : QString(); }
    /// The source that only its poster keeps from being a row; null: none.
    QString sourceInTheMaking() const { return m_rowMaker.source(); }
    KnownSources knownSources() const;
    /// All that are neither rows nor refused nor given up yet, in their order.
    QStringList unfinishedSources() const;

    /// The marks in the order in which they are taken.
    static std::span<const Step<AnalysisDriver>> steps();

    /// The end of the analysis runner's run.
    void analysis();

Q_SIGNALS:
    /// No source is pending any more. Never while isActive().
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
    void handOver();
    void dropSourceAtHand();
    QStringList sourcesUnderWay() const;
    void rowEnded();
    void waitForRow();
    QString report() const;
    bool isReportOfSuccess() const;
    bool isStreamToChoose() const;
    void chooseStream();

    Outlets &m_outlets;
    const BatchList &m_batch;
    ProgressReporter &m_reporter;
    AnalysisReaders m_readers;
    bool m_isActive = false;
    int m_analysisStopInt = 0;
    int m_taken = 0;
    /// This ffmpeg can write decoded frames to a file.
    bool m_canWriteFrames = true;
    /// The last step waits until the row at hand is there.
    bool m_isWaitingForRow = false;
    SourceQueue m_queue;
    std::optional<SourceAtHand> m_atHand;
    RowMaker m_rowMaker;
    BackgroundRun<ReadSource> m_reading;
    BackgroundRun<std::optional<int>> m_choosing;
};

} // namespace vignar
