#include "sheet/thumbnailPlan.h"

#include "classShared/durations.h"
#include "classShared/lineLog.h"
#include "classShared/numbers.h"
#include "sheet/chosenInstants.h"
#include "sheet/extractionPasses.h"
#include "sheet/infoTexts.h"
#include "sheet/pictureTimes.h"
#include "sheet/plannedSource.h"

#include <QFileInfo>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace vignar
{

namespace
{

constexpr std::array<LayoutGrid, 4> layoutGrids{{{2, 4}, {3, 8}, {6, 10}, {6, 8}}};

/// Rows of each layout for sources up to a duration. A number above the rows that the
/// layout can hold is cut to them.
struct RowRule {
    int upToSeconds;
    std::array<int, 4> rows;
};
constexpr std::array<RowRule, 7> rowRules{{
    {119, {1, 1, 2, 1}},
    {299, {1, 2, 3, 2}},
    {719, {2, 3, 4, 3}},
    {1799, {3, 4, 5, 4}},
    {3599, {3, 6, 7, 5}},
    {7199, {4, 8, 8, 6}},
    {std::numeric_limits<int>::max(), {5, 10, 10, 8}},
}};

constexpr QSize largestFrame{1280, 960};

size_t layoutIndex(int layout)
{
    const bool isNamed = layout >= bigLayout && layout < mixLayout;
    return static_cast<size_t>(isNamed ? layout : static_cast<int>(mixLayout));
}

int automaticCount(int layout, int seconds)
{
    const auto rule = std::find_if(rowRules.begin(), rowRules.end(), [seconds](const RowRule &row) {
        return seconds <= row.upToSeconds;
    });
    const LayoutGrid grid = layoutGrid(layout);
    return std::min(rule->rows[layoutIndex(layout)], grid.maxRows) * grid.columns;
}

/// The interval asked for between two pictures, 0 when none is.
int fixedInterval(const SourceDico &source)
{
    if (!contains(source, Keys::thDerush))
        return 0;
    return std::max(read(source, Keys::thDerushInterval).value_or(0), 0);
}

/// Pictures that the fixed interval asks for; nothing when more than the normal count.
std::optional<int> fixedCount(int seconds, int interval, int normalCount)
{
    if (seconds < interval)
        return 2;
    const auto whole =
        static_cast<qint64>(static_cast<float>(seconds) / static_cast<float>(interval));
    qint64 count = whole + 1;
    if (count < normalCount && whole * interval < seconds - 5)
        count = whole + 2;
    const int remainder = seconds % interval;
    logVerbose(u"(durationInt=%ld modulo derushIntervalInt=%ld) == %ld", seconds, interval,
               remainder);
    if (remainder > 1)
        ++count;
    return count > normalCount ? std::nullopt : std::optional(static_cast<int>(count));
}

/// Sets the count of the plan and whether it is fixed.
void planCount(ThumbnailPlan &plan, int layout, int seconds, const SourceDico &source)
{
    const QString file = QFileInfo(readStr(source, Keys::srcPathStr)).fileName();
    int count = contains(source, Keys::thNumberAuto) ? automaticCount(layout, seconds)
                                                     : read(source, Keys::thNumberInt).value_or(16);
    logVerbose(u"(derush#0)   outInt #%ld -> %ld thumbs (src:%@)", layout, count, file);
    if (const int interval = fixedInterval(source); interval > 0) {
        logLine(u"thDerush            : each %@''", interval);
        plan.askedInterval = interval;
        const auto fixed = fixedCount(seconds, interval, count);
        plan.isCountFixed = fixed.has_value();
        count = fixed.value_or(count);
    }
    logVerbose(u"(derush#1)   outInt #%ld -> %ld thumbs (src:%@)", layout, count, file);
    logVerbose(u"(previous)   outInt : %ld -> %ld thumbs (src:%@)", layout, count, file);
    if (!plan.isCountFixed)
        count -= count % layoutGrid(layout).columns;
    plan.count = std::max(count, 0);
    logLine(u"(final)      outInt : %ld -> %ld thumbs (%@)", layout, plan.count, file);
}

/// Sets what follows from the count: interval, instants and their texts.
void planInstants(ThumbnailPlan &plan, int seconds, const SourceDico &source)
{
    if (plan.count == 0)
        return;
    const float interval = plan.isCountFixed
                               ? static_cast<float>(fixedInterval(source))
                               : static_cast<float>(seconds) / static_cast<float>(plan.count);
    logLine(u"intervaleFloat      : %.3f", interval);
    plan.interval = interval;
    // A source of a second or less has no instant one second before its end.
    const double last = std::max(seconds - 1.0, 0.0);
    for (int index = 0; index < plan.count; ++index) {
        const double first = interval > 40 ? 10.0 : plan.interval * 0.25;
        const double instant = std::min(last, index == 0 ? first : index * plan.interval);
        plan.instants.push_back(instant);
        plan.timecodes += timecodeText(instant);
    }
}

/// A length cut to whole pixels. The bound keeps absurd aspect ratios within an integer.
int wholePixels(float length)
{
    return static_cast<int>(std::min(length, 1e6F));
}

/// The aspect ratio that the source asks to be shown with. "0:1", which stands for an
/// unknown ratio, and what no picture could have give nothing.
std::optional<float> displayAspect(const SourceDico &source)
{
    const QStringList terms = read(source, Keys::v_dar, 0).value_or(QString()).split(u':');
    if (terms.size() < 2)
        return std::nullopt;
    const float aspect = str2Float(terms[0]) / str2Float(terms[1]);
    return std::isfinite(aspect) && aspect > 0 ? std::optional(aspect) : std::nullopt;
}

/// The stored size made square-pixelled and cut to the largest frame. All of it in single
/// precision: a double divided by a single ratio would make 1280 × 719 of 1920 × 1080.
QSize frameSize(const SourceDico &source)
{
    const auto logSize = [](const QSize &size) {
        logLine(u"size def            : %ldx%ld", size.width(), size.height());
    };
    QSize size = storedSize(source);
    float ratio = static_cast<float>(size.width()) / static_cast<float>(size.height());
    logLine(u"size src            : %ldx%ld", size.width(), size.height());
    if (const auto aspect = displayAspect(source); aspect && *aspect != ratio) {
        ratio = *aspect;
        size.setWidth(wholePixels(static_cast<float>(size.height()) * ratio));
    }
    logSize(size);
    if (size.width() > largestFrame.width())
        size = {largestFrame.width(), wholePixels(largestFrame.width() / ratio)};
    logSize(size);
    if (size.height() > largestFrame.height())
        size = {wholePixels(ratio * largestFrame.height()), largestFrame.height()};
    logSize(size);
    // ffmpeg would read a side of 0 as "the input's own".
    return size.expandedTo({2, 2});
}

Dico ffmpegPasses(const ThumbnailPlan &plan, const SourceDico &source, const QString &folder)
{
    const QString filter = thumbnailFilter(source, plan.size);
    const bool isTelling = contains(source, Keys::thTrueTimecode);
    Dico passes;
    for (int index = 0; index < plan.count; ++index) {
        const auto makePass = plan.chosen.contains(index) ? exactPass : ffmpegPass;
        const QStringList pass =
            makePass(source, plan.instants[index], isTelling ? filter + timeTeller(index) : filter,
                     thumbnailPath(folder, index));
        logDebug(u"argsArray pass #%ld/%ld: %@", index, plan.count, QVariant(pass));
        passes.insert(QString::number(index), pass);
    }
    return passes;
}

} // namespace

LayoutGrid layoutGrid(int layout)
{
    return layoutGrids[layoutIndex(layout)];
}

QString timecodeText(double instant)
{
    return duree2TimecodeStr(static_cast<float>(instant), 2, false);
}

ThumbnailPlan planThumbnails(int layout, const SourceDico &source)
{
    const int seconds = plannedSeconds(source);
    ThumbnailPlan plan;
    planCount(plan, layout, seconds, source);
    planInstants(plan, seconds, source);
    useChosenInstants(plan, layout, source);
    plan.size = frameSize(source);
    return plan;
}

Dico plannedDisplay(const ThumbnailPlan &plan, const SourceDico &source)
{
    Dico display = infoTexts(source);
    write(display, Keys::wTh, plan.size.width());
    write(display, Keys::hTh, plan.size.height());
    Dico timecodes;
    for (int index = 0; index < plan.count; ++index) {
        if (!plan.timecodes[index].isNull())
            timecodes.insert(QString::number(index), plan.timecodes[index]);
    }
    if (!timecodes.isEmpty())
        write(display, Keys::timecode, timecodes);
    return display;
}

SheetPlan planSheet(int layout, const SourceDico &source, const QString &extractionFolder)
{
    logLine(u"encodage            - deb");
    SheetPlan sheet;
    if (const QString path = readStr(source, Keys::srcPathStr); !QFileInfo::exists(path))
        return sheet;
    sheet.thumbnails = planThumbnails(layout, source);
    sheet.display = plannedDisplay(sheet.thumbnails, source);
    if (sheet.thumbnails.count == 0)
        return sheet;
    if (usesMovieGrabber(source)) {
        logLine(u"         all passes : av");
        sheet.grabberPasses.insert(QString::number(0),
                                   grabberPass(source, sheet.thumbnails, extractionFolder));
    } else {
        sheet.ffmpegPasses = ffmpegPasses(sheet.thumbnails, source, extractionFolder);
    }
    return sheet;
}

} // namespace vignar
