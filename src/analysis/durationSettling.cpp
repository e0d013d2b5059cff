#include "analysis/durationSettling.h"

#include "analysis/durationRule.h"
#include "analysis/mediaClasses.h"
#include "classShared/lineLog.h"
#include "classShared/sizes.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace vignar
{
namespace
{

/// Seconds of the source, 1 or below when they cannot be measured. Of a larger file its head
/// is measured, and the rest taken to be like it.
double measuredSeconds(const DurationContext &context)
{
    const qint64 bytes = QFileInfo(context.srcPath).size();
    if (bytes <= mostMeasuredBytes)
        return context.measure ? context.measure() : 0;
    const int head = context.measureHead ? context.measureHead(mostMeasuredBytes) : 0;
    return head > 1 ? std::trunc(double(head) * double(bytes) / double(mostMeasuredBytes)) : 0;
}

/// Bare streams, and recordings whose end was never written, state no duration, that of
/// their last pictures alone, or one that ffmpeg has guessed.
void measureDoubtfulDuration(Dico &record, const DurationContext &context)
{
    const auto stated = read(record, Keys::w_duration);
    if (stated >= 1 && !context.isGuess)
        return;
    if (const double measured = measuredSeconds(context); measured > 1) {
        write(record, Keys::w_duration, measured);
    } else if (stated > 0) {
        write(record, Keys::w_duration, std::max(1.0, *stated));
    } else {
        remove(record, Keys::w_duration);
    }
}

void fallBackToOneSecond(Dico &record, const DurationContext &context)
{
    logLine(u"w_duration          :-( no duration found for '%@'", context.srcPath);
    if (context.isUsable)
        context.notify(unknownDurationNotice(context.srcPath));
    write(record, Keys::w_duration, 1);
}

void checkDvd(Dico &record, const DurationContext &context)
{
    DvdFile file;
    file.kilobytes = poidsFile(context.srcPath, u"k"_s);
    if (file.kilobytes < 0)
        return;
    if (const auto bitrate = read(record, Keys::w_bitrate))
        file.bitrate = *bitrate;
    file.hasMpeg2Demultiplexer = context.hasMpeg2Demultiplexer;
    file.measure = context.measure;
    const double stated = read(record, Keys::w_duration).value_or(1);
    const CheckedDuration checked = checkedDvdDuration(stated, file);
    if (checked.seconds != stated)
        write(record, Keys::w_duration, checked.seconds);
    if (checked.isTimecodeBroken)
        context.notify(brokenTimecodeNotice());
}

void checkTransport(Dico &record, const DurationContext &context)
{
    TransportStream stream;
    stream.bytes = QFileInfo(context.srcPath).size();
    stream.size = {read(record, Keys::v_width, 0).value_or(0),
                   read(record, Keys::v_height, 0).value_or(0)};
    stream.fps = read(record, Keys::v_fps, 0).value_or(0);
    stream.measure = context.measure;
    const double stated = read(record, Keys::w_duration).value_or(1);
    const double checked = checkedTransportDuration(stated, stream);
    if (checked == stated)
        return;
    logLine(u"w_duration          :-/ time stamps jump, %@ s stated, %@ s measured", stated,
            checked);
    write(record, Keys::w_duration, checked);
}

} // namespace

void settleDuration(Dico &record, const DurationContext &context)
{
    measureDoubtfulDuration(record, context);
    if (!contains(record, Keys::w_duration))
        fallBackToOneSecond(record, context);
    if (isDvdExtension(QFileInfo(context.srcPath).suffix().toLower()))
        checkDvd(record, context);
    else if (readStr(record, Keys::wrapper) == u"mpegts")
        checkTransport(record, context);
}

} // namespace vignar
