#include "app/analysisDriver.h"

#include "analysis/ffReport.h"
#include "app/batchList.h"
#include "app/decodedFrames.h"
#include "app/poster.h"
#include "app/progressReporter.h"
#include "classShared/files.h"
#include "classShared/lineLog.h"
#include "classShared/paths.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "tasks/toolPlaces.h"
#include "tasks/workFolder.h"

#include <QCryptographicHash>
#include <QFileInfo>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// What "analysisSrcPathStr" holds after a stop.
const QString cancelled = u"cancel"_s;

QString framePath()
{
    return workFolder() + u"/frame.yuv"_s;
}

/// ffmpeg's own words, of old and of new versions, for a format that was left out when
/// it was built.
bool lacksFrameFormat(const QString &report)
{
    return report.contains(u"Requested output format 'yuv4mpegpipe' is not") ||
           report.contains(u"Unknown output format 'yuv4mpegpipe'");
}

QString posterPath(const QString &srcPath)
{
    const QByteArray digest =
        QCryptographicHash::hash(srcPath.toUtf8(), QCryptographicHash::Sha1).toHex();
    return workFolder() + u"/poster-"_s + QString::fromLatin1(digest.left(16)) + u".jpg"_s;
}

void setMark(QLatin1String mark)
{
    prefWrite(QString(mark), 1);
}

} // namespace

AnalysisDriver::AnalysisDriver(Outlets &outlets, BatchList &batch, ProgressReporter &reporter,
                               AnalysisReaders readers, QObject *parent)
    : QObject(parent),
      m_outlets(outlets),
      m_batch(batch),
      m_reporter(reporter),
      m_readers(std::move(readers))
{
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

StepEnd AnalysisDriver::begin()
{
    setMark(RunKeys::analysisFfmpeg.text);
    return StepEnd::again;
}

StepEnd AnalysisDriver::startProbe()
{
    const QString source = prefReadStr(RunKeys::analysisSrcPathStr);
    const QString tool = ffmpegPath();
    if (tool.isEmpty() || !pathExists(source)) {
        refuse(localised(tool.isEmpty() ? u"V_reason_noFfmpeg"_s : u"V_reason_missing"_s));
        setMark(RunKeys::analysisFin.text);
        return StepEnd::again;
    }
    logDebug(u"analysis task       - begin");
    // Frames of the source before must not speak for this one.
    rmCocoa(framePath());
    QStringList arguments{tool, u"-loglevel"_s, u"debug"_s, u"-fdebug"_s, u"ts"_s};
    if (const QString forced = prefReadStr(Prefs::ffFileForceFormatStr); !forced.isEmpty())
        arguments << u"-f"_s << forced;
    arguments << u"-i"_s << source << u"-vframes"_s << u"10"_s << u"-pix_fmt"_s << u"yuv420p"_s
              << u"-an"_s;
    if (m_canWriteFrames)
        arguments << u"-f"_s << u"yuv4mpegpipe"_s << u"-y"_s << framePath();
    else
        arguments << u"-c:v"_s << u"rawvideo"_s << u"-f"_s << u"null"_s << u"-y"_s
                  << u"/dev/null"_s;
    setMark(RunKeys::analysisFfmpegParse.text);
    m_reporter.resetFailureWatch();
    m_reporter.tasklauncherStart({arguments, 0, parseCollected, RunnerKind::analysis});
    logDebug(u"analysis task       - end");
    return StepEnd::running;
}

QString AnalysisDriver::report() const
{
    const QString text = m_reporter.analysisTaskVerboseMStr();
    return text.trimmed().isEmpty() ? QString() : text;
}

bool AnalysisDriver::isReportOfSuccess() const
{
    // Names and titles are not ffmpeg's words: "Trial and error 1.mp4" is no failure.
    const QString source = prefReadStr(RunKeys::analysisSrcPathStr);
    return isFfmpegSuccess(withoutMetadata(withoutSourcePath(report(), source)));
}

StepEnd AnalysisDriver::testResult()
{
    if (report().isNull())
        logLine(u"analysisTaskVerboseM:-( no useable info (analysisFfmpegResult)");
    else
        isReportOfSuccess();
    setMark(RunKeys::analysisFfmpegParse.text);
    return StepEnd::again;
}

StepEnd AnalysisDriver::judgeReport()
{
    const QString source = prefReadStr(RunKeys::analysisSrcPathStr);
    if (report().isNull())
        logLine(u"analysisTaskVerboseM:-( no useable info (analysisFfmpegResult)");
    if (m_canWriteFrames && lacksFrameFormat(report())) {
        // A report without frames still tells all but the field order.
        m_canWriteFrames = false;
        setMark(RunKeys::analysisFfmpeg.text);
        return StepEnd::again;
    }
    bool isUsable = isReportOfSuccess();
    if (!isUsable) {
        logLine(u"Src not readable-ff :-( analysis failure");
        // The detector also hears complaints about a few damaged pictures. Here the proof
        // that a source is a movie is a picture of it that was decoded.
        isUsable = holdsDecodedFrame(framePath()) ||
                   (m_readers.movieFramework && m_readers.movieFramework->canDecode(source));
    }
    if (!isUsable)
        refuse(localised(u"V_reason_unreadable"_s));
    setMark(isUsable ? RunKeys::analysisDico.text : RunKeys::analysisFin.text);
    return StepEnd::again;
}

StepEnd AnalysisDriver::startMediaInfo()
{
    const QString source = prefReadStr(RunKeys::analysisSrcPathStr);
    const QString link = workFolder() + u"/mediainfoTmp."_s + QFileInfo(source).suffix();
    rmCocoa(link);
    ln_sCocoa(source, link);
    setMark(RunKeys::analysisMediaInfoParse.text);
    m_reporter.tasklauncherStart({{toolsFolder() + u"/mediainfo"_s, u"-f"_s, link},
                                  0,
                                  parseCollected,
                                  RunnerKind::analysis});
    return StepEnd::running;
}

StepEnd AnalysisDriver::takeMediaInfo()
{
    setMark(RunKeys::analysisDico.text);
    return StepEnd::again;
}

StepEnd AnalysisDriver::buildRecord()
{
    const QString source = prefReadStr(RunKeys::analysisSrcPathStr);
    setMark(RunKeys::analysisFin.text);
    auto record = analyseSource({source, report(), fieldOrderOfFrames(framePath()), {}}, m_readers);
    rmCocoa(framePath());
    if (!record) {
        logLine(u"NON-COMPLIANT FILE  : %@", source);
        refuse(record.reason());
        return StepEnd::again;
    }
    write(*record, Keys::srcPathStr, source);
    const QString poster = posterPath(source);
    rmCocoa(poster);
    makePoster(*record, poster, PosterPicture::intra);
    prefWrite(RunKeys::imgPathStr, poster);
    prefWriteDico(RunKeys::analysisSrcCurrentDico, *record);
    return StepEnd::again;
}

void AnalysisDriver::refuse(const QString &reason)
{
    const QString source = prefReadStr(RunKeys::analysisSrcPathStr);
    logLine(u"Not a compliant file- skipped: '%@'", source);
    m_outlets.sourceRefused(source, reason);
}

StepEnd AnalysisDriver::finish()
{
    logLine(u"analysisFin - begin");
    m_reporter.releaseVerbose();
    storeRow();
    prefDelete(RunKeys::analysisSrcPathStr);
    if (!prefStored(RunKeys::analysisSrcPathesDico).value_or(Dico()).isEmpty()) {
        setMark(RunKeys::analysisDeb.text);
        return StepEnd::again;
    }
    prefDelete(RunKeys::analysisSrcPathesDico);
    prefDelete(RunKeys::alertIfIsNotSrcValid);
    m_outlets.setActionText(RunnerKind::analysis, {});
    logLine(u"analysis            - end (all src)");
    m_isActive = false;
    Q_EMIT ended();
    return StepEnd::ended;
}

void AnalysisDriver::storeRow()
{
    auto record = prefStored(RunKeys::analysisSrcCurrentDico);
    const QString source = prefReadStr(RunKeys::analysisSrcPathStr);
    const QString poster = prefReadStr(RunKeys::imgPathStr);
    prefDelete(RunKeys::analysisSrcCurrentDico);
    prefDelete(RunKeys::imgPathStr);
    if (!record || source == cancelled)
        return;
    write(*record, Keys::srcPathStr, source);
    if (!pathExists(poster)) {
        if (!makePoster(*record, poster, PosterPicture::any)) {
            refuse(localised(u"V_reason_noPicture"_s));
            return;
        }
        write(*record, Keys::intraFailure, 1);
    }
    write(*record, Keys::imgPathStr, poster);
    const BatchEntry row = makeBatchEntry(*record, m_batch.count() + 1, m_outlets.chosenLayout(),
                                          m_outlets.chosenFormat());
    logDebug(u"md                  : %@", *record);
    m_batch.append(row);
}

} // namespace vignar
