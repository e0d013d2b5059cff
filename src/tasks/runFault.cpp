#include "tasks/runFault.h"

#include "settings/stringTables.h"

#include <QRegularExpression>
#include <QStringList>

#include <csignal>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

constexpr int signalStatusBase = 128;

/// Names and titles stand inside quotes or behind blanks; only ffmpeg's own words end a line
/// that begins at its start.
bool lacksMemory(const QString &report)
{
    static const QRegularExpression words(
        u"^(?! ).*(?:: |\\) )?(?:Cannot allocate memory|Out of memory)\\.?\\r?$"_s,
        QRegularExpression::MultilineOption);
    return words.match(report).hasMatch();
}

/// The demuxers that open what a list names.
bool isRefusedList(const QString &report)
{
    static const QRegularExpression refusal(
        u"^\\[(?:hls|applehttp|dash|concat|imf|sdp|rtp|rtsp|vobsub|webm_dash_manifest) @ "
        "[^\\]]*\\] Format not on whitelist"_s,
        QRegularExpression::MultilineOption);
    return refusal.match(report).hasMatch();
}

/// The number of the signal that ended a run, 0 for none. ffmpeg catches the signals that ask it
/// to end, SIGXCPU included, and names the signal at the end of its report. If it does not get
/// that far it exits at the fourth signal, and only SIGXCPU is sent that often.
int endingSignal(int status, const QString &report)
{
    static const QRegularExpression caught(u"^Exiting normally, received signal (\\d+)\\."_s,
                                           QRegularExpression::MultilineOption);
    if (const auto match = caught.match(report); match.hasMatch())
        return match.captured(1).toInt();
    if (report.contains(u"Received > 3 system signals, hard exiting"))
        return SIGXCPU;
    // Above these are the statuses that programs choose.
    const bool isSignal = status > signalStatusBase && status <= signalStatusBase + SIGRTMAX;
    return isSignal ? status - signalStatusBase : 0;
}

} // namespace

RunFault faultOf(int status, const QString &report)
{
    const int signal = endingSignal(status, report);
    if (signal == SIGXCPU)
        return RunFault::tookTooLong;
    if (lacksMemory(report))
        return RunFault::neededMemory;
    if (isRefusedList(report))
        return RunFault::listOfFiles;
    return signal > 0 ? RunFault::killed : RunFault::none;
}

QString faultReason(RunFault fault)
{
    switch (fault) {
    case RunFault::tookTooLong:
        return localised(u"V_reason_tooLong"_s);
    case RunFault::neededMemory:
        return localised(u"V_reason_memory"_s);
    case RunFault::killed:
        return localised(u"V_reason_killed"_s);
    case RunFault::listOfFiles:
        return localised(u"V_reason_list"_s);
    case RunFault::none:
        break;
    }
    return {};
}

} // namespace vignar
