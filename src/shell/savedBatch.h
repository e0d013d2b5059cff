#pragma once

#include "app/batchEntry.h"
#include "shell/batchModel.h"

#include <QObject>
#include <QTimer>

#include <functional>

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
    /// Sheet path without extension of the row being made; empty: none.
    QString unfinished;
};

/// Keeps the batch list in a folder of its own, "batch.json" and a small poster for each
/// row, so that it survives the program however that ends.
///
/// The file is replaced as a whole, at the latest saveDelay after a change; later only
/// where the list is so long that saving it would take up the time.
class SavedBatch : public QObject
{
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds saveDelay{250};

    /// current is asked for what to save.
    SavedBatch(const QString &folder, std::function<SessionState()> current,
               QObject *parent = nullptr);

    /// What was saved last, posters loaded and markers of rows that were being made back
    /// to waiting. A file that cannot be read is kept aside as "batch.json.broken".
    SessionState load() const;

    /// Something has changed.
    void changed();
    /// Saves now; false when the state could not be written, logged once.
    bool save();
    /// Saves now, and nothing that changes from then on.
    void freeze();

private:
    QString filePath() const;
    QString posterPath(const QString &source) const;
    void keepPosters(const SessionState &state) const;

    QString m_folder;
    std::function<SessionState()> m_current;
    QTimer m_timer;
    bool m_isFrozen = false;
    bool m_isFailureTold = false;
};

} // namespace vignar
