#include "app/rowMaker.h"

#include "app/batchList.h"
#include "classShared/files.h"
#include "classShared/lineLog.h"
#include "settings/stringTables.h"

namespace vignar
{

using namespace Qt::StringLiterals;

RowMaker::RowMaker(Outlets &outlets, BatchList &batch, QObject *parent)
    : QObject(parent), m_outlets(outlets), m_batch(batch)
{
}

void RowMaker::start(const SourceDico &record)
{
    m_source = readStr(record, Keys::srcPathStr);
    m_isGivenUp = false;
    const QString poster = readStr(record, Keys::imgPathStr);
    rmCocoa(poster);
    m_poster.start(
        this, [record, poster] { return makePoster(record, poster); },
        [this, record](const Result<PosterPicture> &picture) { end(record, picture); });
}

void RowMaker::refuse(const QString &source, const QString &reason)
{
    logLine(u"Not a compliant file- skipped: '%@'", source);
    if (isBusy())
        m_laterRefusals.append({source, reason});
    else
        m_outlets.sourceRefused(source, reason);
}

void RowMaker::giveUp()
{
    m_isGivenUp = true;
    m_poster.cancel();
}

void RowMaker::end(SourceDico record, const Result<PosterPicture> &picture)
{
    const QString source = std::exchange(m_source, {});
    if (picture && *picture == PosterPicture::any)
        write(record, Keys::intraFailure, 1);
    if (!m_isGivenUp && !picture)
        refuse(source, picture.reason());
    // A drop may have brought it a second time while it was no row yet.
    else if (!m_isGivenUp && !m_batch.holdsSource(source))
        m_batch.append(makeBatchEntry(record, m_batch.count() + 1, m_outlets.chosenLayout(),
                                      m_outlets.chosenFormat()));
    logDebug(u"md                  : %@", record);
    for (const Refusal &refusal : std::exchange(m_laterRefusals, {}))
        m_outlets.sourceRefused(refusal.source, refusal.reason);
    Q_EMIT ended(source);
}

} // namespace vignar
