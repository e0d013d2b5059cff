#include "app/analysisDriver.h"

#include "app/batchList.h"
#include "app/progressReporter.h"
#include "classShared/lineLog.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// What "analysisSrcPathStr" holds after a stop.
const QString cancelled = u"cancel"_s;

} // namespace

AnalysisDriver::AnalysisDriver(Outlets &outlets, BatchList &batch, ProgressReporter &reporter,
                               AnalysisReaders readers, QObject *parent)
    : QObject(parent),
      m_outlets(outlets),
      m_batch(batch),
      m_reporter(reporter),
      m_readers(std::move(readers)),
      m_rowMaker(outlets, batch)
{
    connect(&m_rowMaker, &RowMaker::ended, this, &AnalysisDriver::rowEnded);
    connect(&m_reporter, &ProgressReporter::done, this, [this](RunnerKind kind) {
        if (kind == RunnerKind::analysis)
            analysis();
    });
}

std::span<const Step<AnalysisDriver>> AnalysisDriver::steps()
{
    static constexpr Step<AnalysisDriver> table[] = {
        {RunKeys::analysisDeb.text, &AnalysisDriver::begin},
        {RunKeys::analysisFfmpeg.text, &AnalysisDriver::startProbe},
        {RunKeys::analysisFfmpegResult.text, &AnalysisDriver::testResult},
        {RunKeys::analysisFfmpegParse.text, &AnalysisDriver::judgeReport},
        {RunKeys::analysisMediaInfo.text, &AnalysisDriver::startMediaInfo},
        {RunKeys::analysisMediaInfoParse.text, &AnalysisDriver::takeMediaInfo},
        {RunKeys::analysisDico.text, &AnalysisDriver::buildRecord},
        {RunKeys::analysisFin.text, &AnalysisDriver::finish},
    };
    return table;
}

void AnalysisDriver::take(const QStringList &sources, const QSet<QString> &sourceSet)
{
    m_queue.append(sources, sourceSet);
    if (!m_isActive) {
        m_isActive = true;
        m_taken = 0;
    } else if (!m_isWaitingForRow || m_atHand || m_analysisStopInt == 1) {
        // What is under way comes to them by itself.
        return;
    }
    // Only a poster was left: the newcomers need not wait for it.
    m_isWaitingForRow = false;
    prefDelete(RunKeys::analysisFin);
    setMark(RunKeys::analysisDeb.text);
    again();
}

QStringList AnalysisDriver::sourcesUnderWay() const
{
    QStringList sources;
    if (const QString making = sourceInTheMaking(); !making.isNull())
        sources.append(making);
    // What a stop gives up may be brought again at once.
    if (m_atHand && m_analysisStopInt == 0)
        sources.append(m_atHand->path);
    return sources;
}

KnownSources AnalysisDriver::knownSources() const
{
    return {m_batch.sources(), sourcesUnderWay(), m_queue.asSet()};
}

QStringList AnalysisDriver::unfinishedSources() const
{
    return sourcesUnderWay() + m_queue.paths();
}

void AnalysisDriver::requestStop()
{
    if (!m_isActive)
        return;
    m_analysisStopInt = 1;
    // Now: what is dropped from here on is not meant by the stop.
    m_queue.clear();
    m_reading.cancel();
    m_choosing.cancel();
    m_rowMaker.giveUp();
    if (m_reporter.isRunning(RunnerKind::analysis))
        m_reporter.tasklauncherTerminate(RunnerKind::analysis);
}

void AnalysisDriver::again()
{
    // Through the event loop: five hundred sources must not nest five hundred calls,
    // and the window stays alive between two steps.
    QMetaObject::invokeMethod(this, &AnalysisDriver::analysis, Qt::QueuedConnection);
}

void AnalysisDriver::analysis()
{
    if (!m_isActive)
        return;
    logDebug(u"analysis            - start of step");
    logDebug(u"analysis            - begin");
    if (m_analysisStopInt == 1)
        stop();
    if (prefStored(RunKeys::analysisDeb))
        takeNextSource();
    showSource();
    const auto *step =
        firstPending(steps(), [](QLatin1String mark) { return prefRead(QString(mark)).isValid(); });
    if (step) {
        prefDelete(QString(step->mark));
        if ((this->*step->perform)() == StepEnd::again)
            again();
    } else {
        logLine(u"analysis no arg     :-( nil || empty");
        closeEarly();
        logLine(u"[self analysis]");
        again();
    }
    logDebug(u"analysis            - end of step (post task || self)");
}

void AnalysisDriver::stop()
{
    logLine(u"analysis stop       = 1");
    m_analysisStopInt = 0;
    m_taken = 0;
    dropSourceAtHand();
    prefWrite(RunKeys::analysisSrcPathStr, cancelled);
    closeEarly();
}

void AnalysisDriver::closeEarly()
{
    for (const auto &step : steps())
        prefDelete(QString(step.mark));
    setMark(RunKeys::analysisFin.text);
}

void AnalysisDriver::takeNextSource()
{
    if (m_atHand || m_queue.isEmpty())
        return;
    const QString current = m_queue.takeFirst();
    m_atHand = SourceAtHand{.path = current};
    prefWrite(RunKeys::analysisSrcPathStr, current);
    ++m_taken;
    const QString next = m_queue.isEmpty() ? u"none/end"_s : m_queue.paths().constFirst();
    logDebug(u"analysis new file   : %@", current);
    logLine(u"srcsMDico           ? new current src: '%@' (remaining=%lu, next: '%@')", current,
            m_queue.size(), next);
    logVerbose(u"reliquat = %lu", m_queue.size());
}

void AnalysisDriver::showSource()
{
    if (!m_atHand)
        return;
    m_outlets.setActionText(RunnerKind::analysis,
                            localised(u"D_action_analyse"_s) +
                                filled(u" %lu/%lu", m_taken, m_taken + m_queue.size()));
    logLine(u"batch, c'est parti  : '%@'", m_atHand->path);
}

void AnalysisDriver::setMark(QLatin1String mark)
{
    prefWrite(QString(mark), 1);
}

void AnalysisDriver::refuse(const QString &reason)
{
    m_rowMaker.refuse(sourceAtHand(), reason);
}

StepEnd AnalysisDriver::finish()
{
    logLine(u"analysisFin - begin");
    const bool hasRow = m_atHand && m_atHand->record;
    if (hasRow && m_rowMaker.isBusy()) {
        waitForRow();
        return StepEnd::running;
    }
    m_reporter.releaseVerbose();
    if (hasRow)
        handOver();
    dropSourceAtHand();
    if (!m_queue.isEmpty()) {
        setMark(RunKeys::analysisDeb.text);
        return StepEnd::again;
    }
    if (m_rowMaker.isBusy()) {
        waitForRow();
        return StepEnd::running;
    }
    prefDelete(RunKeys::analysisSrcPathStr);
    prefDelete(RunKeys::alertIfIsNotSrcValid);
    m_outlets.setActionText(RunnerKind::analysis, {});
    logLine(u"analysis            - end (all src)");
    m_isActive = false;
    Q_EMIT ended();
    return StepEnd::ended;
}

void AnalysisDriver::waitForRow()
{
    setMark(RunKeys::analysisFin.text);
    m_isWaitingForRow = true;
}

void AnalysisDriver::handOver()
{
    SourceDico record = *m_atHand->record;
    write(record, Keys::srcPathStr, m_atHand->path);
    write(record, Keys::imgPathStr, m_atHand->posterPath);
    m_rowMaker.start(record);
}

void AnalysisDriver::dropSourceAtHand()
{
    m_atHand.reset();
    prefDelete(RunKeys::analysisSrcPathStr);
    prefDelete(RunKeys::analysisSrcCurrentDico);
    prefDelete(RunKeys::imgPathStr);
}

void AnalysisDriver::rowEnded()
{
    if (std::exchange(m_isWaitingForRow, false))
        again();
}

} // namespace vignar
