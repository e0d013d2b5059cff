#pragma once

#include "shell/batchFile.h"

#include <QObject>
#include <QThreadPool>
#include <QTimer>

#include <functional>

namespace vignar
{

/// Keeps the batch list up to date in its file, so that it survives the program however
/// that ends.
///
/// The file is written on a thread of its own, at the latest saveDelay after a change; later
/// only where the list is so long that writing it would take up the time.
class SavedBatch : public QObject
{
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds saveDelay{250};

    /// current is asked for what to save.
    SavedBatch(const QString &folder, std::function<SessionState()> current,
               QObject *parent = nullptr);
    ~SavedBatch() override;

    SessionState load() const { return m_file.read(); }

    /// Something has changed.
    void changed();
    /// Saves now and waits for it; false when the state could not be written.
    bool save();
    /// Saves now, and nothing that changes from then on.
    void freeze();

private:
    void saveAside();

    BatchFile m_file;
    std::function<SessionState()> m_current;
    QTimer m_timer;
    QThreadPool m_writer;
    bool m_isWriting = false;
    bool m_isAnotherDue = false;
    bool m_isFrozen = false;
};

} // namespace vignar
