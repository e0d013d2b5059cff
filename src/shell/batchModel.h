#pragma once

#include "app/batchEntry.h"
#include "app/outlets.h"

#include <QAbstractListModel>
#include <QFileSystemWatcher>
#include <QHash>
#include <QSet>
#include <QTimer>

#include <optional>

namespace vignar
{

class BatchList;

/// What the user has chosen for one row and its sheet shows.
struct RowChoice {
    int layout = mixLayout;
    int format = 1;
    /// The pictures, as Keys::chosenInstants; plans without a choice are left out.
    Dico pictures;
    bool operator==(const RowChoice &) const = default;
};
RowChoice choiceOf(const BatchEntry &row);

/// What became of a row, for the words beside its marker.
struct RowFate {
    QString reason;
    /// Path of the sheet that was made or kept; empty: none.
    QString sheet;
    /// What the sheet was made with; nothing where that is not known.
    std::optional<RowChoice> choice;
    bool operator==(const RowFate &) const = default;
};

/// The batch list as the drawer shows it, one item a row.
class BatchModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role {
        /// Second and third line of the caption, joined.
        captionRole = Qt::UserRole,
        /// Name of the result marker, one of Puces.
        markerRole,
        /// The marker in words.
        statusRole,
        /// Layout and format in words.
        choiceRole,
        missingRole,
        /// The sheet was made, and the row's choices are others now.
        outdatedRole,
        orderRole,
        pathRole,
        sheetRole
    };

    explicit BatchModel(BatchList &batch, QObject *parent = nullptr);

    /// The paths of the sources, in their order.
    QStringList sources() const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;

    RowFate fate(const QString &source) const { return m_fates.value(source); }
    void setFate(const QString &source, const RowFate &fate);
    /// What the row of a source was begun with, from its turn until its fate is set.
    std::optional<RowChoice> choiceBegunWith(const QString &source) const;
    bool isOutdated(int row) const;
    bool isMissing(const QString &source) const { return m_missing.contains(source); }

    /// Looks again which sources are there.
    void lookForSources();
    /// The words for the choices of the rows are others now.
    void choicesChanged();

private:
    void rowAdded(int index);
    void rowChanged(int index);
    void noteBegin(int index);
    void rowRemoved(int index);
    QString statusText(int row) const;
    QString accessibleText(const QModelIndex &index) const;

    BatchList &m_batch;
    /// Rows told to the views: the list changes before it tells.
    int m_count = 0;
    QHash<QString, RowFate> m_fates;
    /// Of the row being made.
    QString m_begunSource;
    RowChoice m_begunChoice;
    QSet<QString> m_missing;
    QFileSystemWatcher m_folders;
    QTimer m_look;
};

/// "Mix · JPEG".
QString choiceText(int layout, int format);

} // namespace vignar
