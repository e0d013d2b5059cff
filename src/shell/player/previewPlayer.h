#pragma once

#include "shell/player/playerWindow.h"

#include <QPointer>

namespace vignar
{

class BatchList;

/// Plays the sources of the batch list in a window of its own and writes the pictures that
/// the user chooses into their rows. A row that is being made into a sheet is not disturbed:
/// what is chosen meanwhile holds for its next one.
class PreviewPlayer : public QObject
{
    Q_OBJECT

public:
    /// makePlayer: what plays; empty: libmpv with the sound of the system.
    explicit PreviewPlayer(BatchList &batch, PlayerMaker makePlayer = {},
                           QObject *parent = nullptr);
    ~PreviewPlayer() override;

    /// Opens the row of the source, in the window that is open or in a new one.
    void open(const SourceDico &source);
    /// The preferences that the pictures are planned from have changed.
    void planAgain();
    void close();

    /// Null while none is open.
    PlayerWindow *window() const { return m_window; }

private:
    int rowOf(const QString &path) const;
    PlannedPictures plannedPictures(int row) const;
    void keepChosen(const ChosenInstants &chosen);

    BatchList &m_batch;
    PlayerMaker m_makePlayer;
    QPointer<PlayerWindow> m_window;
};

} // namespace vignar
