#include "cli/results.h"

#include "app/measuredDuration.h"
#include "app/rowChoices.h"
#include "classShared/format.h"
#include "classShared/printable.h"
#include "classShared/standIns.h"
#include "cli/recordText.h"
#include "cli/terminal.h"
#include "settings/stringTables.h"

namespace vignar
{

using namespace Qt::StringLiterals;

using Command = CommandLine::Command;

namespace
{

bool isOtherInterval(int asked, double interval)
{
    return asked > 0 && asked != interval;
}

/// Says that the pictures are further apart than was asked for, and what decides that.
QString otherInterval(int layout, int asked, double interval, int count)
{
    return filled(localised(u"V_note_interval"_s), asked, count, QString::number(interval, 'g', 6),
                  QString(limitKey(layout)));
}

} // namespace

QString lostResults(const QString &reason)
{
    return u"vignar-cli: results cannot be written to standard output: %1"_s.arg(reason);
}

Results::Results(const CommandLine &line, ProgressLine &progress, const QStringList &sources)
    : m_screen(line), m_progress(progress), m_texts(size_t(sources.size()))
{
    for (qsizetype position = 0; position < sources.size(); ++position)
        m_positions.insert(sources[position], size_t(position));
}

size_t Results::positionOf(const QString &source) const
{
    return m_positions.value(source, m_texts.size());
}

void Results::refused(size_t position, const QString &source, const QString &reason)
{
    complain(source, reason);
    if (!m_screen.line().isJson)
        return leftOut(position);
    switch (m_screen.line().command) {
    case Command::sheet:
        return settle(position, refusedSheetJson(m_screen.failure(source, reason)));
    case Command::plan:
        return settle(position, planJson({source, m_screen.chosenLayout(), {}, reason}));
    default:
        settle(position, refusedAnalysisJson(source, reason));
    }
}

void Results::unread(const QList<UnreadEntry> &entries)
{
    constexpr qsizetype mostNamed = 20;
    for (const UnreadEntry &entry : entries.first(std::min(mostNamed, entries.size())))
        complain(entry.path, entry.reason);
    if (entries.size() > mostNamed)
        m_progress.print(u"vignar-cli: "_s +
                         filled(localised(u"V_tally_more"_s), entries.size() - mostNamed));
}

void Results::planned(size_t position, const PlannedSource &planned)
{
    const ThumbnailPlan &thumbnails = planned.plan.thumbnails;
    if (!planned.reason.isEmpty())
        complain(planned.source, planned.reason);
    else if (isOtherInterval(thumbnails.askedInterval, thumbnails.interval))
        note(planned.source, otherInterval(planned.layout, thumbnails.askedInterval,
                                           thumbnails.interval, thumbnails.count));
    if (m_screen.line().isJson)
        settle(position, planJson(planned));
    else
        settle(position, planned.reason.isEmpty() ? planText(planned) : QString());
}

void Results::finished(size_t position, const SheetOutcome &outcome)
{
    tell(outcome);
    if (m_screen.line().isJson)
        settle(position, sheetJson(outcome));
    else
        settle(position, outcome.sheet.isEmpty() ? QString() : onOneLine(outcome.sheet));
}

void Results::printed(size_t position, const QString &text)
{
    settle(position, text);
}

void Results::leftOut(size_t position)
{
    settle(position, {});
}

void Results::tell(const SheetOutcome &outcome)
{
    using Status = SheetOutcome::Status;
    const QString &source = outcome.source;
    if (const QString measured = durationNote(outcome); !measured.isNull())
        note(source, measured);
    if (outcome.status == Status::kept)
        note(source, outcome.reason);
    else if (outcome.status != Status::made)
        return complain(source, outcome.reason);
    const int planned = outcome.missing + outcome.thumbnails;
    if (isOtherInterval(outcome.intervalAsked, outcome.interval))
        note(source,
             otherInterval(outcome.layout, outcome.intervalAsked, outcome.interval, planned));
    if (outcome.missing > 0)
        note(source, filled(localised(u"V_reason_missingThumbnails"_s), outcome.missing, planned));
    for (const QString &text : outcome.notes)
        note(source, text);
    m_hasFailure = m_hasFailure || outcome.isIncomplete;
}

void Results::note(const QString &source, const QString &text)
{
    m_progress.print(u"vignar-cli: %1: %2"_s.arg(shownPath(source), text));
}

void Results::complain(const QString &source, const QString &reason)
{
    m_hasFailure = true;
    note(source, reason);
}

void Results::settle(size_t position, const QString &text)
{
    // What belongs to no source, and what comes late, waits for nobody.
    if (position >= m_texts.size() || m_texts[position])
        return print(text);
    m_texts[position] = text;
    for (; m_next < m_texts.size() && m_texts[m_next]; ++m_next)
        print(*m_texts[m_next]);
}

void Results::flush()
{
    for (; m_next < m_texts.size(); ++m_next)
        print(m_texts[m_next].value_or(QString()));
}

void Results::print(const QString &text)
{
    if (text.isNull())
        return;
    m_progress.clear();
    const Result<void> printed = printResult(text);
    if (printed || std::exchange(m_isOutputLost, true))
        return;
    m_hasFailure = true;
    m_progress.print(lostResults(printed.reason()));
}

} // namespace vignar
