#include "classShared/format.h"
#include "sheet/extractionPasses.h"
#include "sheet/fastPasses.h"
#include "sheet/passParts.h"
#include "sheet/pictureTimes.h"

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
    run.arguments << options << path;
}

QStringList freeOfSelection(const QStringList &arguments)
{
    QStringList pass = withoutIntraSelection(arguments);
    if (const qsizetype filter = pass.indexOf(u"-vf"_s) + 1; filter > 0) {
        // The tool goes on to filter what comes after the picture. De-interlacing looks at the
        // next one.
        const int needed = pass.at(filter).contains(u"yadif"_s) ? 2 : 1;
        pass[filter] = filled(u"trim=end_frame=%d,", needed) + tellingAsSubstitute(pass.at(filter));
    }
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
        const QString substitute = pass.path + u".any.jpg"_s;
        appendStretchOutput(run, arguments, offset, pass.path);
        appendStretchOutput(run, freeOfSelection(arguments), offset, substitute);
        run.pictures.push_back(number);
        run.substitutes.emplace(number, substitute);
    }
    return run;
}

bool isWorthAStretch(const PassMap &row)
{
    if (row.size() < 2)
        return false;
    const double length =
        takenApart(row.crbegin()->second).instant - takenApart(row.cbegin()->second).instant;
    return row.size() >= longRow || length <= closeTogether * double(row.size() - 1);
}

} // namespace

std::vector<FastRun> stretchRuns(const PassMap &passes)
{
    std::vector<FastRun> runs;
    PassMap row;
    for (auto pass = passes.cbegin(); pass != passes.cend(); ++pass) {
        if (!selectsIntraPictures(pass->second))
            continue;
        row.insert(*pass);
        const auto next = std::next(pass);
        if (next != passes.cend() && next->first == pass->first + 1 &&
            selectsIntraPictures(next->second))
            continue;
        if (isWorthAStretch(row))
            runs.push_back(stretchRun(row));
        row.clear();
    }
    return runs;
}

} // namespace vignar
