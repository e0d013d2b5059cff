#pragma once

#include "app/batchEntry.h"
#include "shell/batchModel.h"

#include <QHash>
#include <QSet>

namespace vignar
{

/// What of a session outlives the program.
struct SessionState {
    struct Row {
        BatchEntry entry;
        RowFate fate;
    };

    QList<Row> rows;
    /// Sources that wait for their analysis.
    QStringList pending;
    /// A batch is running; where it is read back, the program had not ended by itself.
    bool isMaking = false;
};

/// The batch list in a folder of its own: "batch.json" and a small poster for each row.
class BatchFile
{
public:
    explicit BatchFile(QString folder) : m_folder(std::move(folder)) {}

    /// What was written last, posters loaded and markers of rows that were being made back
    /// to waiting. A file that cannot be read is kept aside as "batch.json.broken".
    SessionState read() const;

    /// Replaces the file as a whole; false when it could not be written, logged once. On
    /// any thread, one call at a time.
    bool write(const SessionState &state);

private:
    struct Written {
        SessionState::Row row;
        QByteArray json;
        QString poster;
    };

    QString path() const;
    QString posterName(const QString &source) const;
    Written &writtenRow(const SessionState::Row &row);
    void keepPoster(const Written &written, QSet<QString> &unused) const;

    QString m_folder;
    /// By source: most rows are what they were at the last writing.
    QHash<QString, Written> m_written;
    bool m_isFailureTold = false;
};

} // namespace vignar
