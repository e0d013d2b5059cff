#include "sheet/quickForms.h"

#include "sheet/excerpts.h"
#include "sheet/intraSearch.h"
#include "sheet/plannedSource.h"

#include <algorithm>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// Groups of pictures are hardly shorter (seconds): passes closer together, each of which
/// would decode one, are quicker done in one go.
constexpr double shortGroup = 2;

/// True when any of its picture streams is of H.264, unless it is known which one is taken.
bool hasAvc(const SourceDico &source)
{
    if (namedStream(source))
        return read(source, Keys::v_codec, 0) == u"h264";
    for (int stream = 0; source.contains(Keys::v_codec(stream)); ++stream) {
        if (read(source, Keys::v_codec, stream) == u"h264")
            return true;
    }
    return false;
}

/// These containers tell all of their streams in a header. Only the time at which the earliest
/// of the streams begins, from which ffmpeg counts when it seeks, takes a look at the pictures.
bool isToldByItsHeader(const SourceDico &source)
{
    const QString container = readStr(source, Keys::wrapper);
    // Which of several streams a seek in such a container goes by is not for us to say.
    return !namedStream(source) && read(source, Keys::w_offset) == 0.0 &&
           (container.startsWith("mov,"_L1) || container.startsWith("matroska,"_L1));
}

/// Seconds between two passes, on average; 0 for one.
double distance(const PassMap &passes)
{
    if (passes.size() < 2)
        return 0;
    const double first = takenApart(passes.cbegin()->second).instant;
    return (takenApart(passes.crbegin()->second).instant - first) / double(passes.size() - 1);
}

QuickForm readBy(const QStringList &input, std::optional<double> time = std::nullopt)
{
    return {.kind = QuickForm::Kind::input, .input = input, .time = time};
}

} // namespace

QuickForms::QuickForms(const PassMap &passes, const SourceDico &source)
    : m_source(source),
      m_isToldByItsHeader(isToldByItsHeader(source)),
      m_hasAvc(hasAvc(source)),
      m_isHevc(read(source, Keys::v_codec, 0) == u"hevc"),
      m_areClose(isContinuous(source) && distance(passes) < shortGroup),
      m_index(m_isToldByItsHeader ? PictureIndex::of(source) : nullptr),
      // Which of several ffmpeg takes is its own affair. An index is of a file with one picture
      // track; what else there is are pictures attached to it, which ffmpeg does not take.
      m_isStreamSure(source.contains(Keys::v_codec(0)) &&
                     (m_index || namedStream(source) || !source.contains(Keys::v_codec(1))))
{
}

QuickForm QuickForms::formOf(const PassParts &pass)
{
    // De-interlacing looks at the next picture.
    if (m_index && canBeExcerpt(pass) && !filterOf(pass.output).contains(u"yadif"_s)) {
        const auto [outcome, picture] = intraPictureAt(*m_index, pass.instant, durationOf(pass));
        if (outcome == IntraSearch::Outcome::none)
            return {.kind = QuickForm::Kind::without, .input = {}, .time = {}};
        if (outcome == IntraSearch::Outcome::found) {
            const QStringList input = lonePictureInput(pass, picture);
            if (!input.isEmpty())
                return readBy(input, double(picture.shownAt) / double(m_index->ticksASecond()));
        }
    }
    return untoldForm(pass);
}

std::optional<double> QuickForms::runUpOf(const PassParts &pass)
{
    std::optional<qint64> sync;
    if (!m_index || !isOnlySought(pass))
        return std::nullopt;
    const qint64 instant = ticksOf(pass.instant, *m_index);
    m_index->visitFrom(instant, [&sync](const CodedPicture &picture) {
        sync = picture.shownAt;
        return false;
    });
    if (!sync)
        return std::nullopt;
    return std::max(0.0, double(instant - *sync) / double(m_index->ticksASecond()));
}

bool QuickForms::canBeExcerpt(const PassParts &pass) const
{
    return isOnlySought(pass) && durationOf(pass) > 0 && m_isToldByItsHeader && m_isStreamSure &&
           opensExcerpts(pass.tool);
}

/// Input options that leave out whatever the intra selection would drop anyway.
QStringList QuickForms::intraOnly() const
{
    QStringList options;
    if (m_isToldByItsHeader)
        options << u"-nofind_stream_info"_s;
    options << QStringList{u"-skip_frame"_s, u"nointra"_s, u"-threads"_s, u"1"_s};
    // To put them in order, of which intra pictures on their own have no need.
    if (m_hasAvc || m_isHevc)
        options << u"-flags"_s << u"low_delay"_s;
    return options;
}

/// An excerpt of nothing but the picture that the pass takes; empty when it cannot be told.
QStringList QuickForms::lonePictureInput(const PassParts &pass, const CodedPicture &picture) const
{
    if (!picture.isSync && !m_index->seeksAnywhere())
        return {};
    const auto seconds = [this](qint64 ticks) {
        return double(ticks) / double(m_index->ticksASecond());
    };
    const qint64 soughtAt = std::max<qint64>(0, picture.soughtAt);
    const QStringList excerpt =
        excerptInput(pass.source, {.zero = seconds(ticksOf(pass.instant, *m_index)),
                                   .start = seconds(soughtAt),
                                   .end = seconds(soughtAt + 1),
                                   .startsAnywhere = !picture.isSync});
    return excerpt.isEmpty() ? excerpt : intraOnly() + excerpt;
}

QStringList QuickForms::skippingInput(const PassParts &pass) const
{
    // Even without delay this decoder waits for further pictures, here intra pictures that may
    // be far away. What ends behind the time of the pass makes it hand out what it has.
    QStringList input;
    if (m_isHevc && canBeExcerpt(pass)) {
        const double end = pass.instant + durationOf(pass);
        input =
            excerptInput(pass.source, {.zero = pass.instant, .start = pass.instant, .end = end});
    }
    if (input.isEmpty())
        input = pass.input + QStringList{u"-i"_s, pass.source};
    return intraOnly() + input;
}

/// For a pass whose picture no table tells.
QuickForm QuickForms::untoldForm(const PassParts &pass) const
{
    if (!m_hasAvc)
        return readBy(skippingInput(pass));
    // Without the pictures between, this decoder takes an intra picture that is no key picture
    // for one to be shown at another time.
    if (m_areClose)
        return {};
    return readBy(QStringList{u"-threads"_s, u"1"_s} + pass.input +
                  QStringList{u"-i"_s, pass.source});
}

} // namespace vignar
