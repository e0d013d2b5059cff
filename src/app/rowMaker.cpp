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
    m_isBusy = true;
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
    m_source = QString();
    m_poster.cancel();
}

void RowMaker::end(SourceDico record, const Result<PosterPicture> &picture)
{
    const QString source = std::exchange(m_source, {});
    m_isBusy = false;
    if (picture && *picture == PosterPicture::any)
        write(record, Keys::intraFailure, 1);
    if (!source.isNull() && !picture)
        refuse(source, picture.reason());
    else if (!source.isNull())
        append(record);
    for (const Refusal &refusal : std::exchange(m_laterRefusals, {}))
        m_outlets.sourceRefused(refusal.source, refusal.reason);
    Q_EMIT ended();
}

void RowMaker::append(const SourceDico &record)
{
    const BatchEntry row = makeBatchEntry(record, m_batch.count() + 1, m_outlets.chosenLayout(),
                                          m_outlets.chosenFormat());
    logDebug(u"md                  : %@", row);
    m_batch.append(row);
}

} // namespace vignar
