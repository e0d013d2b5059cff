#include "shell/runTally.h"

#include "app/measuredDuration.h"
#include "classShared/format.h"
#include "settings/stringTables.h"

#include <QFileInfo>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int troublesShown = 3;

QString trouble(const QString &source, const QString &reason)
{
    return filled(localised(u"V_tally_trouble"_s), QFileInfo(source).fileName(), reason);
}

} // namespace

QString reasonText(const SheetOutcome &outcome)
{
    if (outcome.status != SheetOutcome::Status::made)
        return outcome.reason;
    QStringList reasons;
    if (const QString measured = durationNote(outcome); !measured.isNull())
        reasons << measured;
    if (outcome.missing > 0)
        reasons << filled(localised(u"V_reason_missingThumbnails"_s), outcome.missing,
                          outcome.missing + outcome.thumbnails);
    return (reasons + outcome.notes).join(localised(u"V_reason_join"_s));
}

void RunTally::add(const SheetOutcome &outcome)
{
    switch (outcome.status) {
    case SheetOutcome::Status::made:
        ++m_made;
        break;
    case SheetOutcome::Status::kept:
        ++m_kept;
        break;
    case SheetOutcome::Status::failed:
    case SheetOutcome::Status::stopped:
        ++m_failed;
        break;
    }
    const QString reason = reasonText(outcome);
    if (!reason.isEmpty() && outcome.status != SheetOutcome::Status::kept)
        m_troubles.append(trouble(outcome.source, reason));
}

void RunTally::addRefusal(const QString &source, const QString &reason)
{
    ++m_refused;
    m_troubles.append(trouble(source, reason));
}

QString RunTally::summary() const
{
    QStringList parts;
    if (m_made > 0)
        parts << filled(localised(u"V_tally_made"_s), m_made);
    if (m_kept > 0)
        parts << filled(localised(u"V_tally_kept"_s), m_kept);
    if (m_failed > 0)
        parts << filled(localised(u"V_tally_failed"_s), m_failed);
    return parts.join(u" · "_s);
}

QString RunTally::troubles() const
{
    QStringList lines = m_troubles.mid(0, troublesShown);
    if (m_troubles.size() > troublesShown)
        lines << filled(localised(u"V_tally_more"_s), m_troubles.size() - troublesShown);
    return lines.join(u'\n');
}

} // namespace vignar
