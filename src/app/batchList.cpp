#include "app/batchList.h"

#include "app/outlets.h"
#include "classShared/files.h"
#include "classShared/lineLog.h"
#include "settings/alerts.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"

#include <QFileInfo>

namespace vignar
{

using namespace Qt::StringLiterals;

BatchList::BatchList(Outlets &outlets, QObject *parent) : QObject(parent), m_outlets(outlets) {}

QString BatchList::sourcePath(int index) const
{
    return readStr(read(row(index), RowKeys::dico).value_or(Dico()), Keys::srcPathStr);
}

QString BatchList::resultat(int index) const
{
    return readStr(row(index), RowKeys::resultat);
}

bool BatchList::isToMake(int index) const
{
    return resultat(index) == Puces::puce && !m_passedOver.contains(sourcePath(index));
}

int BatchList::waitingRow(int from) const
{
    for (int index = from; index < count(); ++index) {
        if (isToMake(index))
            return index;
    }
    return -1;
}

void BatchList::append(const BatchEntry &row)
{
    m_rows.append(row);
    ++m_sources[sourcePath(count() - 1)];
    Q_EMIT rowAdded(count() - 1);
    m_outlets.setDrawerOpen(true);
}

void BatchList::setResultat(int index, QLatin1String puce)
{
    write(m_rows[index], RowKeys::resultat, puce);
    Q_EMIT rowChanged(index);
}

void BatchList::resetResultats()
{
    m_passedOver.clear();
    for (int index = 0; index < count(); ++index)
        setResultat(index, Puces::puce);
}

void BatchList::select(int index)
{
    m_selected = index >= 0 && index < count() ? index : -1;
    Q_EMIT selectionChanged(m_selected);
}

void BatchList::resetUnmade()
{
    m_passedOver.clear();
    for (int index = 0; index < count(); ++index) {
        if (resultat(index) != Puces::puceSuccess)
            setResultat(index, Puces::puce);
    }
}

void BatchList::resetOnly(const QSet<QString> &sources)
{
    m_passedOver.clear();
    for (int index = 0; index < count(); ++index) {
        if (!sources.contains(sourcePath(index)))
            m_passedOver.insert(sourcePath(index));
    }
    for (int index = 0; index < count(); ++index) {
        if (sources.contains(sourcePath(index)))
            setResultat(index, Puces::puce);
    }
}

void BatchList::setChoices(int index, int layout, int format)
{
    write(m_rows[index], Keys::out, layout);
    write(m_rows[index], Keys::dpi, format);
    Q_EMIT rowChanged(index);
}

void BatchList::setRecord(int index, const SourceDico &record)
{
    write(m_rows[index], RowKeys::dico, record);
    write(m_rows[index], RowKeys::src, rowCaption(record));
    Q_EMIT rowChanged(index);
}

int BatchList::encBatchInprogressRowIdentification() const
{
    const QString current = prefReadStr(RunKeys::encCurrentProcessingFile);
    int found = -1;
    for (int index = 0; index < count() && found < 0 && !current.isEmpty(); ++index) {
        const QString path = sourcePath(index);
        logDebug(u"#%ld %@", index, QFileInfo(path).fileName());
        if (path == current)
            found = index;
    }
    logDebug(u"encBatchInprogressRowIdentification == :-) %ld", found);
    return found;
}

bool BatchList::isSelectedSrcInProgress(const QString &path) const
{
    const int inProgress = encBatchInprogressRowIdentification();
    return !path.isNull() && inProgress >= 0 && sourcePath(inProgress) == path;
}

bool BatchList::batchRemoval(bool single, bool isAlertToDisplay)
{
    logLine(u"batchRemoval        : %@", single ? u"single"_s : u"all"_s);
    if (m_rows.isEmpty())
        return false;
    if (!single && isAlertToDisplay && !isRemovalOfAllConfirmed())
        return false;
    const int inProgress = encBatchInprogressRowIdentification();
    logLine(u"srcInProgressIndexIn= %ld", inProgress);
    if (!single)
        removeAllButInProgress(inProgress);
    else if (!removeSingle(inProgress, isAlertToDisplay))
        return false;
    if (m_rows.isEmpty()) {
        m_outlets.setGoEnabled(false);
        m_outlets.setDrawerOpen(false);
    }
    return true;
}

void BatchList::encBatchRemove(bool hasSender)
{
    logLine(u"encBatchRemove      : %d", batchRemoval(true, hasSender));
}

void BatchList::encBatchRemoveAll(bool hasSender)
{
    logLine(u"encBatchRemoveAll   : %d", batchRemoval(false, hasSender));
}

bool BatchList::isRemovalOfAllConfirmed() const
{
    // Nobody there to answer is no consent: only the button itself removes.
    return alertTimed(localised(u"D_batch_4"_s), localised(u"D_batch_5"_s),
                      localised(u"D_Annuler"_s), localised(u"D_oui"_s), {}, AlertStyle::warning,
                      60) == AlertButton::second;
}

bool BatchList::removeSingle(int inProgress, bool isAlertToDisplay)
{
    if (m_selected < 0)
        return true;
    if (m_selected == inProgress) {
        if (isAlertToDisplay)
            m_outlets.showSheetNotice(localised(u"D_batch_1"_s), {});
        return false;
    }
    logLine(u"remove single index # %ld", m_selected);
    removeRow(m_selected);
    return true;
}

void BatchList::removeAllButInProgress(int inProgress)
{
    m_outlets.setGoEnabled(false);
    const QString kept = inProgress >= 0 ? sourcePath(inProgress) : QString();
    for (int index = 0; index < count();) {
        if (!kept.isNull() && sourcePath(index) == kept)
            ++index;
        else
            removeRow(index);
    }
}

void BatchList::removeRow(int index)
{
    const Dico dico = read(row(index), RowKeys::dico).value_or(Dico());
    if (const QString poster = readStr(dico, Keys::imgPathStr); !poster.isEmpty())
        rmCocoa(poster);
    if (const QString source = sourcePath(index); --m_sources[source] == 0)
        m_sources.remove(source);
    m_rows.removeAt(index);
    for (int following = index; following < count(); ++following)
        write(m_rows[following], RowKeys::order, following + 1);
    Q_EMIT rowRemoved(index);
    select(std::min(m_selected, count() - 1));
}

} // namespace vignar
