#include "sheet/fastPasses.h"

#include "classShared/format.h"
#include "sheet/pictureTimes.h"
#include "sheet/quickForms.h"

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
constexpr int mostPicturesARun = 14;
/// What the decoders of one process may hold, and how many pictures each of them does.
constexpr double decoderMemory = 256e6;
constexpr double picturesHeld = 10;

/// Reports tell times with six digits.
constexpr double timeTolerance = 0.002;

/// So many that all processes have the same to do.
int picturesARun(int passes, const SourceDico &source, int processes)
{
    const double width = read(source, Keys::v_width, 0).value_or(1920);
    const double height = read(source, Keys::v_height, 0).value_or(1080);
    const double decoder = picturesHeld * std::max(1.0, width * height) * 1.5;
    const int held = std::clamp(int(decoderMemory / decoder), 1, mostPicturesARun);
    const auto upTo = [](int number, int step) { return (number + step - 1) / step; };
    const int rounds = std::max(1, upTo(passes, held * processes));
    return std::max(1, upTo(passes, rounds * processes));
}

/// The forms that are inputs; what else is found goes into the plan.
std::map<int, QuickForm> formsOf(const PassMap &passes, QuickForms &quick, IntraPlan &plan)
{
    std::map<int, QuickForm> forms;
    for (const auto &[number, arguments] : passes) {
        if (QThread::currentThread()->isInterruptionRequested())
            break;
        const PassParts pass = takenApart(arguments);
        const QuickForm form = selectsIntraPictures(arguments) ? quick.formOf(pass) : QuickForm();
        if (form.kind == QuickForm::Kind::without)
            plan.without.insert(number);
        if (form.kind == QuickForm::Kind::input)
            forms.emplace(number, form);
        if (const auto runUp = quick.runUpOf(pass))
            plan.runUps.emplace(number, *runUp);
    }
    return forms;
}

/// The run of some passes that have a quick form.
class IntraRun
{
public:
    IntraRun(const QString &tool, bool isStreamSure) : m_tool(tool), m_isStreamSure(isStreamSure) {}

    void add(int number, const PassParts &pass, const QuickForm &form)
    {
        const double instant = inputOf(pass, form);
        // In an excerpt ffmpeg does not see which pictures are merely attached.
        if (m_isStreamSure)
            m_outputs << u"-map"_s << u"%1:%2"_s.arg(QString::number(m_input), streamOf(pass));
        m_outputs << (form.time ? telling(pass, number, instant) : pass.output) << pass.path;
        m_run.pictures.push_back(number);
        if (form.time)
            m_run.times.emplace(number, *form.time);
    }

    size_t size() const { return m_run.pictures.size(); }

    FastRun run()
    {
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

    static QString streamOf(const PassParts &pass)
    {
        return pass.stream.isEmpty() ? u"V:0"_s : pass.stream.constLast().section(u':', 1);
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
    bool m_isStreamSure;
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
    QuickForms quick(passes, source);
    const std::map<int, QuickForm> forms = formsOf(passes, quick, plan);
    // Which stream to take of each input can be told only where it is sure.
    const int share =
        quick.isStreamSure() ? picturesARun(int(forms.size()), source, std::max(1, processes)) : 1;
    std::optional<IntraRun> run;
    for (const auto &[number, form] : forms) {
        const PassParts pass = takenApart(passes.at(number));
        if (!run)
            run.emplace(pass.tool, quick.isStreamSure());
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
