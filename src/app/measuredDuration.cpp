#include "app/measuredDuration.h"

#include "analysis/ffReport.h"
#include "analysis/reportText.h"
#include "app/outlets.h"
#include "app/poster.h"
#include "classShared/durations.h"
#include "classShared/format.h"
#include "settings/stringTables.h"
#include "sheet/plannedSource.h"
#include "tasks/toolPlaces.h"
#include "tasks/waitedRun.h"

#include <algorithm>
#include <cmath>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr std::chrono::seconds measureLimit{120};

/// Seconds by which a header may differ from what it describes.
constexpr double sameDuration = 2;

/// The time in ffmpeg's last progress line, once it has come to the end.
std::optional<double> readTime(const QString &report)
{
    const QStringList lines = reportLines(report);
    const auto progress = std::find_if(lines.crbegin(), lines.crend(), [](const QString &line) {
        return line.startsWith(u"frame=") && line.contains(u" time=");
    });
    if (progress == lines.crend() || !progress->contains(u"Lsize="))
        return std::nullopt;
    const QString time = textBefore(textAfter(*progress, u" time="), u" ").toString();
    const float seconds = timecodeStr2Float(time);
    return seconds > 0 ? std::optional<double>(seconds) : std::nullopt;
}

} // namespace

std::optional<double> measuredDuration(const SourceDico &source)
{
    const QString path = readStr(source, Keys::srcPathStr);
    QStringList run{ffmpegPath(), u"-loglevel"_s, u"info"_s, u"-i"_s, path};
    run << u"-map"_s
        << u"0:%1"_s.arg(namedStream(source) ? QString::number(*namedStream(source)) : u"V:0"_s);
    run << QStringList{u"-c"_s, u"copy"_s, u"-f"_s, u"null"_s, u"-y"_s, u"/dev/null"_s};
    const auto lastPicture =
        readTime(withoutMetadata(withoutSourcePath(taskArrayWithin(run, measureLimit), path)));
    if (!lastPicture)
        return std::nullopt;
    // It is shown for as long as any other. Times are told with two decimals.
    const double rate = read(source, Keys::v_fps, 0).value_or(unknownFrameRate);
    return *lastPicture + (rate > 0 ? 1 / rate : 0) + 0.01;
}

bool isOverstated(const SourceDico &source, std::optional<double> measured)
{
    return measured && plannedSeconds(source) - *measured >= sameDuration;
}

SourceDico withDuration(SourceDico source, double measured)
{
    // A poster sought behind the end says nothing about the kinds of the pictures.
    if (posterPosition(source) >= measured)
        remove(source, Keys::intraFailure);
    // As the report is read: whole seconds, and a clip of less counts as one.
    write(source, Keys::w_duration, std::max(1.0, std::floor(measured)));
    return source;
}

QString durationNote(const SheetOutcome &outcome)
{
    if (outcome.measuredDuration <= 0)
        return {};
    return filled(localised(u"V_note_duration"_s), duree2HmsStr(outcome.statedDuration),
                  duree2HmsStr(outcome.measuredDuration));
}

} // namespace vignar
