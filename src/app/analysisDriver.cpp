#include "app/analysisDriver.h"

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

void AnalysisDriver::start()
{
    if (m_isActive)
        return;
    m_isActive = true;
    m_taken = 0;
    again();
}

void AnalysisDriver::requestStop()
{
    if (!m_isActive)
        return;
    m_analysisStopInt = 1;
    m_reading.cancel();
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
    prefDelete(RunKeys::analysisSrcPathesDico);
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
    if (!prefReadStr(RunKeys::analysisSrcPathStr).isEmpty())
        return;
    const Dico pending = prefStored(RunKeys::analysisSrcPathesDico).value_or(Dico());
    const QString current = pending.value(u"0"_s).toString();
    if (current.isEmpty())
        return;
    Dico remaining;
    for (int number = 1; number < pending.size(); ++number)
        remaining.insert(QString::number(number - 1), pending.value(QString::number(number)));
    if (remaining.isEmpty())
        prefDelete(RunKeys::analysisSrcPathesDico);
    else
        prefWriteDico(RunKeys::analysisSrcPathesDico, remaining);
    prefWrite(RunKeys::analysisSrcPathStr, current);
    ++m_taken;
    const QString next = remaining.value(u"0"_s, u"none/end"_s).toString();
    logDebug(u"analysis new file   : %@", current);
    logLine(u"srcsMDico           ? new current src: '%@' (remaining=%lu, next: '%@')", current,
            remaining.size(), next);
    logVerbose(u"reliquat = %lu", remaining.size());
}

void AnalysisDriver::showSource()
{
    const qsizetype waiting = prefStored(RunKeys::analysisSrcPathesDico).value_or(Dico()).size();
    m_outlets.setActionText(RunnerKind::analysis,
                            localised(u"D_action_analyse"_s) +
                                filled(u" %lu/%lu", m_taken, m_taken + waiting));
    logLine(u"batch, c'est parti  : '%@'", prefReadStr(RunKeys::analysisSrcPathStr));
}

void AnalysisDriver::setMark(QLatin1String mark)
{
    prefWrite(QString(mark), 1);
}

void AnalysisDriver::refuse(const QString &reason)
{
    m_rowMaker.refuse(prefReadStr(RunKeys::analysisSrcPathStr), reason);
}

StepEnd AnalysisDriver::finish()
{
    logLine(u"analysisFin - begin");
    const bool hasRow = prefStored(RunKeys::analysisSrcCurrentDico).has_value();
    if (hasRow && m_rowMaker.isBusy()) {
        waitForRow();
        return StepEnd::running;
    }
    m_reporter.releaseVerbose();
    startRow();
    if (!prefStored(RunKeys::analysisSrcPathesDico).value_or(Dico()).isEmpty()) {
        prefDelete(RunKeys::analysisSrcPathStr);
        setMark(RunKeys::analysisDeb.text);
        return StepEnd::again;
    }
    if (m_rowMaker.isBusy()) {
        waitForRow();
        return StepEnd::running;
    }
    prefDelete(RunKeys::analysisSrcPathStr);
    prefDelete(RunKeys::analysisSrcPathesDico);
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

void AnalysisDriver::startRow()
{
    auto record = prefStored(RunKeys::analysisSrcCurrentDico);
    const QString source = prefReadStr(RunKeys::analysisSrcPathStr);
    const QString poster = prefReadStr(RunKeys::imgPathStr);
    prefDelete(RunKeys::analysisSrcCurrentDico);
    prefDelete(RunKeys::imgPathStr);
    if (!record || source == cancelled)
        return;
    write(*record, Keys::srcPathStr, source);
    write(*record, Keys::imgPathStr, poster);
    m_rowMaker.start(*record);
}

void AnalysisDriver::rowEnded(const QString &source)
{
    // A drop that came meanwhile must not begin with it again.
    if (prefReadStr(RunKeys::analysisSrcPathStr) == source)
        prefDelete(RunKeys::analysisSrcPathStr);
    if (std::exchange(m_isWaitingForRow, false))
        again();
}

} // namespace vignar
