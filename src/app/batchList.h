#pragma once

#include "app/batchEntry.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>

namespace vignar
{

class Outlets;

/// The rows in the order in which they are made into sheets. Rows are never reordered
/// by the program, and the row in progress is never removed.
class BatchList : public QObject
{
    Q_OBJECT

public:
    explicit BatchList(Outlets &outlets, QObject *parent = nullptr);

    int count() const { return static_cast<int>(m_rows.size()); }
    const BatchEntry &row(int index) const { return m_rows.at(index); }
    QString sourcePath(int index) const;
    QString resultat(int index) const;
    bool holdsSource(const QString &path) const { return m_sources.contains(path); }
    /// The sources of all rows, with how many rows each has.
    const QHash<QString, int> &sources() const { return m_sources; }
    /// A row that waits for its sheet and is not passed over by the run.
    bool isToMake(int index) const;
    /// The first row to make from an index on, or -1.
    int waitingRow(int from) const;

    /// Appends a row and opens the drawer that shows the list.
    void append(const BatchEntry &row);
    void setResultat(int index, QLatin1String puce);
    /// Sets every row's marker back to waiting.
    void resetResultats();
    /// The same, but for the rows whose sheets were made.
    void resetUnmade();
    /// The same for the rows of these sources alone: those that wait beside them are passed
    /// over until markers are set back again. Rows that join the list are not.
    void resetOnly(const QSet<QString> &sources);
    /// The layout and the format (0 PDF, 1 JPEG) that a row will be made in.
    void setChoices(int index, int layout, int format);
    /// Replaces what is known of the row's source, which stays the same.
    void setRecord(int index, const SourceDico &record);

    /// -1: none.
    int selectedRow() const { return m_selected; }
    void select(int index);

    /// Row of the source named by "encCurrentProcessingFile", or -1.
    int encBatchInprogressRowIdentification() const;
    bool isSelectedSrcInProgress(const QString &path) const;

    /// Removes the selected row (single) or all rows but the one in progress. False
    /// when nothing may be removed or the user declines.
    bool batchRemoval(bool single, bool isAlertToDisplay);

    /// The user's actions; with a sender the alerts are shown.
    void encBatchRemove(bool hasSender);
    void encBatchRemoveAll(bool hasSender);

Q_SIGNALS:
    /// Also while a batch is running.
    void rowAdded(int index);
    void rowChanged(int index);
    void rowRemoved(int index);
    void selectionChanged(int index);

private:
    bool removeSingle(int inProgress, bool isAlertToDisplay);
    void removeAllButInProgress(int inProgress);
    void removeRow(int index);
    bool isRemovalOfAllConfirmed() const;

    Outlets &m_outlets;
    QList<BatchEntry> m_rows;
    QHash<QString, int> m_sources;
    QSet<QString> m_passedOver;
    int m_selected = -1;
};

} // namespace vignar
