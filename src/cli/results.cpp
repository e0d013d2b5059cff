#include "cli/results.h"

#include "classShared/format.h"
#include "cli/jsonLines.h"
#include "cli/terminal.h"
#include "settings/stringTables.h"

namespace vignar
{

using namespace Qt::StringLiterals;

Results::Results(const CommandLine &line, ProgressLine &progress, const QStringList &sources)
    : m_line(line), m_progress(progress), m_texts(size_t(sources.size()))
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
    if (!m_line.isJson)
        return leftOut(position);
    const bool isSheet = m_line.command == CommandLine::Command::sheet;
    settle(position,
           isSheet ? refusedSheetJson(source, reason) : refusedAnalysisJson(source, reason));
}

void Results::finished(size_t position, const SheetOutcome &outcome)
{
    tell(outcome);
    if (m_line.isJson)
        settle(position, sheetJson(outcome));
    else
        settle(position, outcome.sheet.isEmpty() ? QString() : outcome.sheet);
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
    const auto note = [&](const QString &text) {
        m_progress.print(u"vignar-cli: %1: %2"_s.arg(outcome.source, text));
    };
    if (outcome.status == Status::kept)
        return note(outcome.reason);
    if (outcome.status != Status::made)
        return complain(outcome.source, outcome.reason);
    if (outcome.missing > 0)
        note(u"%1 of %2 thumbnails could not be extracted"_s.arg(outcome.missing)
                 .arg(outcome.missing + outcome.thumbnails));
    if (outcome.isDiskPictureKept)
        note(filled(localised(u"V_reason_diskPictureKept"_s), outcome.diskPicture));
    if (!outcome.previewNote.isEmpty())
        note(outcome.previewNote);
}

void Results::complain(const QString &source, const QString &reason)
{
    m_hasFailure = true;
    m_progress.print(u"vignar-cli: %1: %2"_s.arg(source, reason));
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
    printResult(text);
}

} // namespace vignar
