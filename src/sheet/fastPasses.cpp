#include "sheet/fastPasses.h"

#include "classShared/format.h"
#include "sheet/excerpts.h"
#include "sheet/extractionPasses.h"
#include "sheet/intraSearch.h"
#include "sheet/pictureTimes.h"

#include <QThread>

#include <algorithm>
#include <cmath>
#include <optional>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// More pictures a process save little more, and the progress would stand still.
constexpr int mostPicturesARun = 7;
/// What the decoders of one process may hold, and how many pictures each of them does.
constexpr double decoderMemory = 256e6;
constexpr double picturesHeld = 10;

/// Neighbours at most so far apart (seconds) share a decode however few they are.
constexpr double closeTogether = 15;
/// So many neighbours in a row without an intra picture tell of a source that has hardly
/// any: each plain pass would decode it from far away.
constexpr size_t longRow = 4;

/// Reports tell times with six digits.
constexpr double timeTolerance = 0.002;

/// A planned pass, taken apart.
struct Pass {
    QString tool;
    /// Options of the input, without the log level; the seek is among them.
    QStringList input;
    QString source;
    /// Options of the output, without its path.
    QStringList output;
    QString path;
    double instant = 0;
};

Pass takenApart(const QStringList &arguments)
{
    const qsizetype input = arguments.indexOf(u"-i"_s);
    Pass pass{.tool = arguments.value(0),
              .input = arguments.mid(1, input - 1),
              .source = arguments.value(input + 1),
              .output = arguments.mid(input + 2, arguments.size() - input - 3),
              .path = arguments.constLast()};
    if (const qsizetype level = pass.input.indexOf(u"-loglevel"_s); level >= 0)
        pass.input.remove(level, 2);
    if (const qsizetype seek = pass.input.indexOf(u"-ss"_s); seek >= 0)
        pass.instant = pass.input.value(seek + 1).toDouble();
    return pass;
}

/// What a pass of an intra picture can be read by instead.
struct QuickForm {
    /// Options of the input and the input.
    QStringList input;
    /// When the picture is shown (seconds into the source), where this is known.
    std::optional<double> time;
};

QString filterOf(const QStringList &output)
{
    return output.value(output.indexOf(u"-vf"_s) + 1);
}

bool selectsIntraPictures(const QStringList &pass)
{
    return pass.contains(u"-i"_s) && withoutIntraSelection(pass) != pass;
}

/// Which stream ffmpeg picks of several is its own affair; only of one there is no doubt.
bool hasOnePictureStream(const SourceDico &source)
{
    return source.contains(Keys::v_codec(0)) && !source.contains(Keys::v_codec(1));
}

int picturesARun(qsizetype passes, const SourceDico &source, int processes)
{
    if (!hasOnePictureStream(source))
        return 1;
    const double width = read(source, Keys::v_width, 0).value_or(1920);
    const double height = read(source, Keys::v_height, 0).value_or(1080);
    const double decoder = picturesHeld * std::max(1.0, width * height) * 1.5;
    const int held = std::clamp(int(decoderMemory / decoder), 1, mostPicturesARun);
    const int share = int((passes + processes - 1) / processes);
    return std::clamp(share, 1, held);
}

/// These containers tell all of their streams in a header. Only the time at which the earliest
/// of the streams begins, from which ffmpeg counts when it seeks, takes a look at the pictures.
bool isToldByItsHeader(const SourceDico &source)
{
    const QString container = readStr(source, Keys::wrapper);
    return read(source, Keys::w_offset) == 0.0 &&
           (container.startsWith("mov,"_L1) || container.startsWith("matroska,"_L1));
}

bool isAvc(const SourceDico &source)
{
    return read(source, Keys::v_codec, 0) == u"h264";
}

bool isHevc(const SourceDico &source)
{
    return read(source, Keys::v_codec, 0) == u"hevc";
}

double durationOf(const Pass &pass)
{
    return pass.output.value(pass.output.indexOf(u"-t"_s) + 1).toDouble();
}

bool canBeExcerpt(const Pass &pass, const SourceDico &source)
{
    const bool isOnlySought = pass.input.size() == 2 && pass.input.constFirst() == u"-ss";
    return isOnlySought && durationOf(pass) > 0 && isToldByItsHeader(source) &&
           hasOnePictureStream(source) && opensExcerpts(pass.tool);
}

/// Input options that leave out whatever the intra selection would drop anyway.
QStringList intraOnly(const SourceDico &source)
{
    QStringList options;
    if (isToldByItsHeader(source))
        options << u"-nofind_stream_info"_s;
    options << QStringList{u"-skip_frame"_s, u"nointra"_s, u"-threads"_s, u"1"_s};
    // To put them in order, of which intra pictures on their own have no need.
    if (isAvc(source) || isHevc(source))
        options << u"-flags"_s << u"low_delay"_s;
    return options;
}

/// Even without delay this decoder waits for further pictures, here intra pictures that may
/// be far away. What ends behind the time of the pass makes it hand out what it has.
QStringList excerptOf(const Pass &pass, const SourceDico &source)
{
    if (!isHevc(source) || !canBeExcerpt(pass, source))
        return {};
    return excerptInput(
        pass.source,
        {.zero = pass.instant, .start = pass.instant, .end = pass.instant + durationOf(pass)});
}

QStringList skippingInput(const Pass &pass, const SourceDico &source)
{
    const QStringList excerpt = excerptOf(pass, source);
    return intraOnly(source) +
           (excerpt.isEmpty() ? pass.input + QStringList{u"-i"_s, pass.source} : excerpt);
}

/// An excerpt of nothing but the picture that the pass takes; nothing when it cannot be told.
std::optional<QuickForm> lonePicture(const Pass &pass, const SourceDico &source,
                                     const PictureIndex &index, const CodedPicture &picture)
{
    if (!picture.isSync && !index.seeksAnywhere())
        return std::nullopt;
    const auto seconds = [&index](qint64 ticks) {
        return double(ticks) / double(index.ticksASecond());
    };
    const qint64 soughtAt = std::max<qint64>(0, picture.soughtAt);
    const QStringList excerpt =
        excerptInput(pass.source, {.zero = seconds(ticksOf(pass.instant, index)),
                                   .start = seconds(soughtAt),
                                   .end = seconds(soughtAt + 1),
                                   .startsAnywhere = !picture.isSync});
    if (excerpt.isEmpty())
        return std::nullopt;
    return QuickForm{intraOnly(source) + excerpt, seconds(picture.shownAt)};
}

/// The quick form of a pass; nothing where it has none or would find no picture.
std::optional<QuickForm> quickForm(const Pass &pass, const SourceDico &source, PictureIndex *index)
{
    // De-interlacing looks at the next picture.
    if (index && canBeExcerpt(pass, source) && !filterOf(pass.output).contains(u"yadif"_s)) {
        const IntraSearch search = intraPictureAt(*index, pass.instant, durationOf(pass));
        if (search.outcome == IntraSearch::Outcome::none)
            return std::nullopt;
        if (search.outcome == IntraSearch::Outcome::found) {
            if (auto form = lonePicture(pass, source, *index, search.picture))
                return form;
        }
    }
    // Without the pictures between, this decoder takes an intra picture that is no key picture
    // for one to be shown at another time.
    if (isAvc(source))
        return std::nullopt;
    return QuickForm{skippingInput(pass, source), std::nullopt};
}

/// The passes that have a quick form.
std::map<int, QuickForm> quickForms(const PassMap &passes, const SourceDico &source)
{
    const auto index = isToldByItsHeader(source) ? PictureIndex::of(source) : nullptr;
    std::map<int, QuickForm> forms;
    for (const auto &[number, arguments] : passes) {
        if (QThread::currentThread()->isInterruptionRequested())
            break;
        if (!selectsIntraPictures(arguments))
            continue;
        if (auto form = quickForm(takenApart(arguments), source, index.get()))
            forms.emplace(number, *std::move(form));
    }
    return forms;
}

/// The options of an output whose filter tells the time of its picture.
QStringList telling(QStringList output, int number)
{
    const qsizetype filter = output.indexOf(u"-vf"_s) + 1;
    if (!tellsTimes(output.at(filter)))
        output[filter] += timeTeller(number);
    return output;
}

/// One run of passes that have a quick form.
FastRun intraRun(const PassMap &passes, const std::map<int, QuickForm> &forms)
{
    FastRun run;
    QStringList inputs;
    QStringList outputs;
    for (const auto &[number, arguments] : passes) {
        const Pass pass = takenApart(arguments);
        const QuickForm &form = forms.at(number);
        if (run.arguments.isEmpty())
            run.arguments << pass.tool << u"-loglevel"_s << u"info"_s;
        inputs << form.input;
        if (passes.size() > 1)
            outputs << u"-map"_s << u"%1:V:0"_s.arg(run.pictures.size());
        outputs << (form.time ? telling(pass.output, number) : pass.output) << pass.path;
        run.pictures.push_back(number);
        if (form.time)
            run.times.emplace(number, *form.time);
    }
    run.arguments << inputs << outputs;
    return run;
}

/// The filter text with everything before the offset (seconds into the stretch), and from
/// 12 seconds after it, cut away, as the seek and the duration of a plain pass do.
QString trimmed(const QString &filter, double offset)
{
    return filled(u"trim=start=%.2f:duration=12,setpts=PTS-%.2f/TB,", offset, offset) + filter;
}

void appendStretchOutput(FastRun &run, const QStringList &arguments, double offset,
                         const QString &path)
{
    const Pass pass = takenApart(arguments);
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
    const Pass first = takenApart(passes.cbegin()->second);
    FastRun run;
    run.arguments << first.tool << u"-loglevel"_s << u"info"_s << first.input << u"-i"_s
                  << first.source;
    for (const auto &[number, arguments] : passes) {
        const Pass pass = takenApart(arguments);
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

std::vector<FastRun> intraRuns(const PassMap &passes, const SourceDico &source, int processes)
{
    const std::map<int, QuickForm> forms = quickForms(passes, source);
    const int share = picturesARun(qsizetype(forms.size()), source, std::max(1, processes));
    std::vector<FastRun> runs;
    PassMap group;
    for (auto form = forms.cbegin(); form != forms.cend(); ++form) {
        group.insert(*passes.find(form->first));
        if (group.size() == size_t(share) || std::next(form) == forms.cend())
            runs.push_back(intraRun(std::exchange(group, {}), forms));
    }
    return runs;
}

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

bool isOfItsTime(const FastRun &run, int picture, const QStringList &pass, const QString &report)
{
    const auto known = run.times.find(picture);
    if (known == run.times.end())
        return true;
    const auto told = toldTime(report, pass, picture);
    return told && std::abs(*told - known->second) < timeTolerance;
}

} // namespace vignar
