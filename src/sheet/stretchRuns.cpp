#include "classShared/format.h"
#include "sheet/extractionPasses.h"
#include "sheet/fastPasses.h"
#include "sheet/passParts.h"
#include "sheet/pictureTimes.h"

#include <algorithm>
#include <array>
#include <optional>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// Neighbours at most so far apart (seconds) share a decode however few they are.
constexpr double closeTogether = 15;
/// So many neighbours in a row without an intra picture tell of a source that has hardly
/// any: each plain pass would decode it from far away.
constexpr size_t longRow = 4;

/// As ffmpeg names them first.
constexpr std::array continuousContainers{"mov,"_L1, "matroska,"_L1, "avi"_L1, "flv"_L1, "asf"_L1};

/// The filter text with everything before the offset (seconds into the stretch), and from
/// 12 seconds after it, cut away, as the seek and the duration of a plain pass do.
QString trimmed(const QString &filter, double offset)
{
    return filled(u"trim=start=%.2f:duration=12,setpts=PTS-%.2f/TB,", offset, offset) + filter;
}

void appendStretchOutput(FastRun &run, const QStringList &arguments, double offset,
                         const QString &path)
{
    const PassParts pass = takenApart(arguments);
    QStringList options = pass.output;
    const qsizetype filter = options.indexOf(u"-vf"_s) + 1;
    if (filter > 0)
        options[filter] = trimmed(options.at(filter), offset);
    run.arguments << pass.stream << options << path;
}

/// The filter text passing on no more than a pass that takes any picture needs: the tool goes
/// on to filter what comes after the picture.
QString endingSoon(const QString &filter)
{
    // De-interlacing looks at the next picture.
    return filled(u"trim=end_frame=%d,", filter.contains(u"yadif"_s) ? 2 : 1) + filter;
}

QStringList takingAny(const QStringList &arguments)
{
    QStringList pass = withoutIntraSelection(arguments);
    QString &filter = pass[pass.indexOf(u"-vf"_s) + 1];
    filter = endingSoon(pass == arguments ? filter : tellingAsSubstitute(filter));
    return pass;
}

FastRun stretchRun(const PassMap &passes)
{
    const PassParts first = takenApart(passes.cbegin()->second);
    FastRun run;
    run.arguments << first.tool << u"-loglevel"_s << u"info"_s << first.input << u"-i"_s
                  << first.source;
    for (const auto &[number, arguments] : passes) {
        const PassParts pass = takenApart(arguments);
        const double offset = pass.instant - first.instant;
        run.pictures.push_back(number);
        if (!selectsIntraPictures(arguments)) {
            appendStretchOutput(run, takingAny(arguments), offset, pass.path);
            continue;
        }
        const QString substitute = pass.path + u".any.jpg"_s;
        appendStretchOutput(run, arguments, offset, pass.path);
        appendStretchOutput(run, takingAny(arguments), offset, substitute);
        run.substitutes.emplace(number, substitute);
    }
    return run;
}

/// What the passes of a row decode (seconds), each on its own; nothing where it is not told.
std::optional<double> decodedAlone(const PassMap &row, const std::map<int, double> &runUps)
{
    double seconds = 0;
    for (const auto &[number, arguments] : row) {
        const auto runUp = runUps.find(number);
        if (runUp == runUps.end())
            return std::nullopt;
        // One that selects goes on looking for as long as it may, then another run takes any.
        seconds += selectsIntraPictures(arguments)
                       ? 2 * runUp->second + durationOf(takenApart(arguments))
                       : runUp->second;
    }
    return seconds;
}

bool isWorthAStretch(const PassMap &row, const std::map<int, double> &runUps)
{
    if (row.size() < 2)
        return false;
    const double length =
        takenApart(row.crbegin()->second).instant - takenApart(row.cbegin()->second).instant;
    if (const auto alone = decodedAlone(row, runUps))
        return runUps.at(row.cbegin()->first) + length < *alone;
    // Passes that take any picture end with the first, and mostly begin not far before it.
    return selectsIntraPictures(row.cbegin()->second) &&
           (row.size() >= longRow || length <= closeTogether * double(row.size() - 1));
}

/// Only passes that do no more than to seek can be told by the place in a stretch.
bool canShareAStretch(const QStringList &arguments)
{
    const PassParts pass = takenApart(arguments);
    return isOnlySought(pass) && !filterOf(pass.output).isEmpty() &&
           !pass.output.contains(u"-ss"_s);
}

bool areNeighbours(const PassMap::value_type &pass, const PassMap::value_type &next)
{
    return next.first == pass.first + 1 && canShareAStretch(next.second) &&
           selectsIntraPictures(next.second) == selectsIntraPictures(pass.second);
}

} // namespace

bool isContinuous(const SourceDico &source)
{
    const QString container = readStr(source, Keys::wrapper);
    return std::ranges::any_of(continuousContainers, [&container](QLatin1StringView name) {
        return container.startsWith(name);
    });
}

std::vector<FastRun> stretchRuns(const PassMap &passes, const SourceDico &source,
                                 const std::map<int, double> &runUps)
{
    std::vector<FastRun> runs;
    if (!isContinuous(source))
        return runs;
    PassMap row;
    for (auto pass = passes.cbegin(); pass != passes.cend(); ++pass) {
        if (!canShareAStretch(pass->second))
            continue;
        row.insert(*pass);
        const auto next = std::next(pass);
        if (next != passes.cend() && areNeighbours(*pass, *next))
            continue;
        if (isWorthAStretch(row, runUps))
            runs.push_back(stretchRun(row));
        row.clear();
    }
    return runs;
}

} // namespace vignar
