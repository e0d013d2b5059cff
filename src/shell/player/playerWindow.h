#pragma once

#include "shell/player/moveQueue.h"
#include "shell/player/playerCommands.h"
#include "shell/player/timeline.h"

#include <functional>
#include <memory>

namespace vignar
{

class PictureView;
class PlayerControls;

using PlayerMaker = std::function<std::unique_ptr<MediaPlayer>()>;

/// A window that plays one source at a time and lets the user choose pictures for its
/// sheet. The source is let go of when the window closes.
class PlayerWindow : public QWidget
{
    Q_OBJECT

public:
    explicit PlayerWindow(PlayerMaker makePlayer, QWidget *parent = nullptr);
    ~PlayerWindow() override;

    /// Shows the poster, if any, and opens the source at the first of the pictures. The
    /// duration (seconds) holds until the player knows better.
    void open(const QString &path, const QImage &poster, double duration,
              const PlannedPictures &pictures);
    void setPictures(const PlannedPictures &pictures);
    const QString &path() const { return m_path; }
    void perform(PlayerCommand command, bool isRepeated = false);

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    /// By the user.
    void chosenChanged(const vignar::ChosenInstants &chosen);
    /// The picture shown is that of the position and nothing moves any more.
    void settled(double seconds);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void startPlayer();
    void endPlayer();
    bool handleKey(QObject &watched, const QKeyEvent &press);
    double place() const;
    void seek(double seconds);
    void seekToChapter(FrameStep direction);
    void seekToPicture(FrameStep direction);
    void step(FrameStep direction, bool isRepeated);
    void togglePlay();
    void toggleMute();
    void useShown();
    void resetNearest();
    void handleSettled(double seconds);
    void handleFailure();
    void setPaused(bool isPaused);
    void setChosen(const ChosenInstants &chosen);

    PlayerMaker m_makePlayer;
    PictureView *m_view;
    PlayerControls *m_controls;
    std::unique_ptr<MediaPlayer> m_player;
    std::unique_ptr<MoveQueue> m_queue;

    QString m_path;
    PlannedPictures m_pictures;
    MediaInfo m_info;
    double m_position = 0;
    bool m_isPaused = true;
    bool m_isMuted = false;
    /// The instant of the picture shown, known to be exact.
    std::optional<double> m_settledAt;
    /// What the last seek asked for; the picture there may start a little later.
    std::optional<double> m_asked;
    bool m_isUsing = false;
};

} // namespace vignar
