#include "app/analysisDriver.h"

#include "analysis/ffReport.h"
#include "analysis/ffReportVerdicts.h"
#include "analysis/pictureStream.h"
#include "app/decodedFrames.h"
#include "app/progressReporter.h"
#include "classShared/files.h"
#include "classShared/lineLog.h"
#include "classShared/paths.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "sheet/excerpts.h"
#include "tasks/toolPlaces.h"
#include "tasks/workFolder.h"

#include <QCryptographicHash>
#include <QFileInfo>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

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

} // namespace

StepEnd AnalysisDriver::begin()
{
    setMark(m_atHand ? RunKeys::analysisFfmpeg.text : RunKeys::analysisFin.text);
    return StepEnd::again;
}

StepEnd AnalysisDriver::startProbe()
{
    const QString source = sourceAtHand();
    const QString tool = ffmpegPath();
    if (tool.isEmpty() || !pathExists(source)) {
        refuse(localised(tool.isEmpty() ? u"V_reason_noFfmpeg"_s : u"V_reason_missing"_s));
        setMark(RunKeys::analysisFin.text);
        return StepEnd::again;
    }
    if (!renewWorkFolder()) {
        refuse(filled(localised(u"V_reason_workFolder"_s), workFolder()));
        setMark(RunKeys::analysisFin.text);
        return StepEnd::again;
    }
    logDebug(u"analysis task       - begin");
    // Frames of the source before must not speak for this one.
    rmCocoa(framePath());
    QStringList arguments{tool, u"-loglevel"_s, u"debug"_s, u"-fdebug"_s, u"ts"_s};
    if (const QString forced = prefReadStr(Prefs::ffFileForceFormatStr); !forced.isEmpty())
        arguments << u"-f"_s << forced;
    arguments << u"-i"_s << source;
    if (m_atHand->stream)
        arguments << u"-map"_s << u"0:%1"_s.arg(*m_atHand->stream);
    arguments << u"-vframes"_s << u"10"_s << u"-pix_fmt"_s << u"yuv420p"_s << u"-an"_s;
    if (m_canWriteFrames)
        arguments << u"-f"_s << u"yuv4mpegpipe"_s << u"-y"_s << framePath();
    else
        arguments << u"-c:v"_s << u"rawvideo"_s << u"-f"_s << u"null"_s << u"-y"_s
                  << u"/dev/null"_s;
    setMark(RunKeys::analysisFfmpegParse.text);
    m_reporter.resetFailureWatch();
    m_reporter.tasklauncherStart({.arguments = arguments,
                                  .parseMode = parseCollected,
                                  .kind = RunnerKind::analysis,
                                  .limits = probeLimits(),
                                  .time = SourceBudget::report});
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
    const QString source = sourceAtHand();
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
    const QString source = sourceAtHand();
    if (report().isNull())
        logLine(u"analysisTaskVerboseM:-( no useable info (analysisFfmpegResult)");
    hearVersion(ffmpegPath(), report());
    if (m_canWriteFrames && lacksFrameFormat(report())) {
        // A report without frames still tells all but the field order.
        m_canWriteFrames = false;
        setMark(RunKeys::analysisFfmpeg.text);
        return StepEnd::again;
    }
    if (isStreamToChoose()) {
        chooseStream();
        return StepEnd::running;
    }
    const RunFault fault = m_reporter.lastFault(RunnerKind::analysis);
    bool isUsable = fault == RunFault::none && isReportOfSuccess();
    if (!isUsable) {
        logLine(u"Src not readable-ff :-( analysis failure");
        // The detector also hears complaints about a few damaged pictures. Here the proof
        // that a source is a movie is a picture of it that was decoded.
        isUsable = holdsDecodedFrame(framePath()) ||
                   (m_readers.movieFramework && m_readers.movieFramework->canDecode(source));
    }
    if (!isUsable)
        refuse(fault == RunFault::none
                   ? localised(unreadableReason(withoutSourcePath(report(), source)))
                   : faultReason(fault));
    setMark(isUsable ? RunKeys::analysisDico.text : RunKeys::analysisFin.text);
    return StepEnd::again;
}

bool AnalysisDriver::isStreamToChoose() const
{
    return m_atHand && !m_atHand->isStreamChosen &&
           videoStreams(withoutSourcePath(report(), m_atHand->path)).size() > 1;
}

/// Where another stream is the picture than the one that ffmpeg takes, the source is probed once
/// more: field order, colours and faults are then those of that stream.
void AnalysisDriver::chooseStream()
{
    m_atHand->isStreamChosen = true;
    const QString source = m_atHand->path;
    const QString text = withoutSourcePath(report(), source);
    const auto choose = [source, text] {
        return pictureStream(text,
                             [&source](int stream) { return picturesOfStream(source, stream); });
    };
    m_choosing.start(this, choose, [this, taken = videoStreams(text).constFirst()](auto stream) {
        if (stream && *stream != taken)
            m_atHand->stream = stream;
        setMark(m_atHand->stream ? RunKeys::analysisFfmpeg.text
                                 : RunKeys::analysisFfmpegParse.text);
        again();
    });
}

StepEnd AnalysisDriver::startMediaInfo()
{
    const QString source = sourceAtHand();
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
    setMark(RunKeys::analysisFin.text);
    const AnalysisInput input{.srcPath = sourceAtHand(),
                              .report = report(),
                              .fields = fieldOrderOfFrames(framePath()),
                              .picture = pictureOfFrames(framePath())};
    rmCocoa(framePath());
    const auto read = [input, readers = m_readers]() mutable -> ReadSource {
        QList<SourceNotice> notices;
        readers.notify = [&notices](const SourceNotice &notice) { notices.append(notice); };
        Result<SourceDico> record = analyseSource(input, readers);
        return {std::move(record), notices};
    };
    m_reading.start(this, read, [this](const ReadSource &answer) {
        takeRecord(answer);
        again();
    });
    m_reading.cancelAfter(SourceBudget::record);
    return StepEnd::running;
}

void AnalysisDriver::takeRecord(const ReadSource &read)
{
    if (m_analysisStopInt == 1)
        return;
    for (const SourceNotice &notice : read.notices)
        showNotice(notice);
    if (m_reading.isLate())
        return refuse(faultReason(RunFault::tookTooLong));
    if (!read.record) {
        logLine(u"NON-COMPLIANT FILE  : %@", m_atHand->path);
        refuse(read.record.reason());
        return;
    }
    m_atHand->record = *read.record;
    m_atHand->posterPath = posterPath(m_atHand->path);
    prefWrite(RunKeys::imgPathStr, m_atHand->posterPath);
    prefWriteDico(RunKeys::analysisSrcCurrentDico, *m_atHand->record);
}

} // namespace vignar
