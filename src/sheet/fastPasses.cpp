#include "sheet/fastPasses.h"

#include "classShared/format.h"
#include "sheet/excerpts.h"
#include "sheet/extractionPasses.h"
#include "sheet/intraSearch.h"
#include "sheet/passParts.h"
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

/// Groups of pictures are hardly shorter (seconds): passes closer together, each of which
/// would decode one, are quicker done in one go.
constexpr double shortGroup = 2;
/// Reports tell times with six digits.
constexpr double timeTolerance = 0.002;

/// What a pass of an intra picture can be read by instead.
struct QuickForm {
    enum class Kind {
        /// None is quicker than the forms that come after this.
        none,
        /// None finds a picture.
        without,
        input
    };

    Kind kind = Kind::none;
    /// Options of the input and the input.
    QStringList input;
    /// When the picture is shown (seconds into the source), where this is known.
    std::optional<double> time;
};

QuickForm readBy(const QStringList &input, std::optional<double> time = std::nullopt)
{
    return {.kind = QuickForm::Kind::input, .input = input, .time = time};
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

/// True when any of its picture streams is of H.264: which one ffmpeg takes is not known.
bool hasAvc(const SourceDico &source)
{
    for (int stream = 0; source.contains(Keys::v_codec(stream)); ++stream) {
        if (read(source, Keys::v_codec, stream) == u"h264")
            return true;
    }
    return false;
}

bool isHevc(const SourceDico &source)
{
    return read(source, Keys::v_codec, 0) == u"hevc";
}

bool canBeExcerpt(const PassParts &pass, const SourceDico &source)
{
    return isOnlySought(pass) && durationOf(pass) > 0 && isToldByItsHeader(source) &&
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
    if (hasAvc(source) || isHevc(source))
        options << u"-flags"_s << u"low_delay"_s;
    return options;
}

/// Even without delay this decoder waits for further pictures, here intra pictures that may
/// be far away. What ends behind the time of the pass makes it hand out what it has.
QStringList excerptOf(const PassParts &pass, const SourceDico &source)
{
    if (!isHevc(source) || !canBeExcerpt(pass, source))
        return {};
    return excerptInput(
        pass.source,
        {.zero = pass.instant, .start = pass.instant, .end = pass.instant + durationOf(pass)});
}

QStringList skippingInput(const PassParts &pass, const SourceDico &source)
{
    const QStringList excerpt = excerptOf(pass, source);
    return intraOnly(source) +
           (excerpt.isEmpty() ? pass.input + QStringList{u"-i"_s, pass.source} : excerpt);
}

/// An excerpt of nothing but the picture that the pass takes; empty when it cannot be told.
QStringList lonePictureInput(const PassParts &pass, const SourceDico &source,
                             const PictureIndex &index, const CodedPicture &picture)
{
    if (!picture.isSync && !index.seeksAnywhere())
        return {};
    const auto seconds = [&index](qint64 ticks) {
        return double(ticks) / double(index.ticksASecond());
    };
    const qint64 soughtAt = std::max<qint64>(0, picture.soughtAt);
    const QStringList excerpt =
        excerptInput(pass.source, {.zero = seconds(ticksOf(pass.instant, index)),
                                   .start = seconds(soughtAt),
                                   .end = seconds(soughtAt + 1),
                                   .startsAnywhere = !picture.isSync});
    return excerpt.isEmpty() ? excerpt : intraOnly(source) + excerpt;
}

/// For a pass whose picture no table tells.
QuickForm untoldForm(const PassParts &pass, const SourceDico &source, bool areClose)
{
    if (!hasAvc(source))
        return readBy(skippingInput(pass, source));
    // Without the pictures between, this decoder takes an intra picture that is no key picture
    // for one to be shown at another time.
    if (areClose)
        return {};
    return readBy(QStringList{u"-threads"_s, u"1"_s} + pass.input +
                  QStringList{u"-i"_s, pass.source});
}

QuickForm quickForm(const PassParts &pass, const SourceDico &source, PictureIndex *index,
                    bool areClose)
{
    // De-interlacing looks at the next picture.
    if (index && canBeExcerpt(pass, source) && !filterOf(pass.output).contains(u"yadif"_s)) {
        const auto [outcome, picture] = intraPictureAt(*index, pass.instant, durationOf(pass));
        if (outcome == IntraSearch::Outcome::none)
            return {.kind = QuickForm::Kind::without, .input = {}, .time = {}};
        if (outcome == IntraSearch::Outcome::found) {
            const QStringList input = lonePictureInput(pass, source, *index, picture);
            if (!input.isEmpty())
                return readBy(input, double(picture.shownAt) / double(index->ticksASecond()));
        }
    }
    return untoldForm(pass, source, areClose);
}

/// Seconds between two passes, on average; 0 for one.
double distance(const PassMap &passes)
{
    if (passes.size() < 2)
        return 0;
    const double first = takenApart(passes.cbegin()->second).instant;
    return (takenApart(passes.crbegin()->second).instant - first) / double(passes.size() - 1);
}

/// Seconds from the sync picture before the instant of a pass to it, where they are told.
std::optional<double> runUpOf(const PassParts &pass, const SourceDico &source, PictureIndex *index)
{
    std::optional<qint64> sync;
    if (!index || !isOnlySought(pass) || !hasOnePictureStream(source))
        return std::nullopt;
    const qint64 instant = ticksOf(pass.instant, *index);
    index->visitFrom(instant, [&sync](const CodedPicture &picture) {
        sync = picture.shownAt;
        return false;
    });
    if (!sync)
        return std::nullopt;
    return std::max(0.0, double(instant - *sync) / double(index->ticksASecond()));
}

/// The forms of the passes that select intra pictures; what is known of the others.
std::map<int, QuickForm> quickForms(const PassMap &passes, const SourceDico &source,
                                    IntraPlan &plan)
{
    const auto index = isToldByItsHeader(source) ? PictureIndex::of(source) : nullptr;
    const bool areClose = distance(passes) < shortGroup;
    std::map<int, QuickForm> forms;
    for (const auto &[number, arguments] : passes) {
        if (QThread::currentThread()->isInterruptionRequested())
            break;
        const PassParts pass = takenApart(arguments);
        QuickForm form;
        if (selectsIntraPictures(arguments))
            form = quickForm(pass, source, index.get(), areClose);
        if (form.kind == QuickForm::Kind::without)
            plan.without.insert(number);
        if (form.kind == QuickForm::Kind::input)
            forms.emplace(number, std::move(form));
        if (const auto runUp = runUpOf(pass, source, index.get()))
            plan.runUps.emplace(number, *runUp);
    }
    return forms;
}

/// The run of some passes that have a quick form.
class IntraRun
{
public:
    explicit IntraRun(const QString &tool) : m_tool(tool) {}

    void add(int number, const PassParts &pass, const QuickForm &form)
    {
        const double instant = inputOf(pass, form);
        m_outputs << u"-map"_s << u"%1:V:0"_s.arg(m_input);
        m_outputs << (form.time ? telling(pass, number, instant) : pass.output) << pass.path;
        m_run.pictures.push_back(number);
        if (form.time)
            m_run.times.emplace(number, *form.time);
    }

    size_t size() const { return m_run.pictures.size(); }

    FastRun run()
    {
        // Of a single input ffmpeg is free to choose the stream, as in a plain pass.
        if (size() == 1)
            m_outputs.remove(0, 2);
        m_run.arguments << m_tool << u"-loglevel"_s << u"info"_s << m_inputs << m_outputs;
        return std::move(m_run);
    }

private:
    /// Chooses the input of a pass, which is that of the last one when both take the same
    /// picture; answers the instant that its clock counts from.
    double inputOf(const PassParts &pass, const QuickForm &form)
    {
        if (m_input < 0 || !form.time || form.time != m_time) {
            m_inputs << form.input;
            m_time = form.time;
            m_instant = pass.instant;
            ++m_input;
        }
        return m_instant;
    }

    /// The options of an output whose filter tells the time of its picture, from the instant
    /// of its own pass on.
    static QStringList telling(const PassParts &pass, int number, double clockInstant)
    {
        QStringList output = pass.output;
        QString &filter = output[output.indexOf(u"-vf"_s) + 1];
        if (!tellsTimes(filter))
            filter += timeTeller(number);
        if (pass.instant != clockInstant)
            filter.prepend(filled(u"setpts=PTS-%.2f/TB,", pass.instant - clockInstant));
        return output;
    }

    QString m_tool;
    QStringList m_inputs;
    QStringList m_outputs;
    FastRun m_run;
    int m_input = -1;
    /// Of the last input.
    std::optional<double> m_time;
    double m_instant = 0;
};

} // namespace

IntraPlan intraPlan(const PassMap &passes, const SourceDico &source, int processes)
{
    IntraPlan plan;
    const std::map<int, QuickForm> forms = quickForms(passes, source, plan);
    const int share = picturesARun(qsizetype(forms.size()), source, std::max(1, processes));
    std::optional<IntraRun> run;
    for (const auto &[number, form] : forms) {
        const PassParts pass = takenApart(passes.at(number));
        if (!run)
            run.emplace(pass.tool);
        run->add(number, pass, form);
        if (run->size() == size_t(share) || number == forms.crbegin()->first) {
            plan.runs.push_back(run->run());
            run.reset();
        }
    }
    return plan;
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
