#pragma once

#include "shell/player/mediaPlayer.h"

#include <optional>

namespace vignar
{

/// Lets one move of a player be under way at a time. Of the seeks wanted meanwhile only
/// the last is made, after it the steps that were wanted since.
class MoveQueue : public QObject
{
    Q_OBJECT

public:
    explicit MoveQueue(MediaPlayer &player);

    void open(const QString &path, double seconds);
    void seek(double seconds);
    void step(FrameStep direction);

    bool isMoving() const { return m_isMoving; }
    /// Where the seeks wanted so far lead, in seconds; nothing when none is under way.
    std::optional<double> destination() const;

Q_SIGNALS:
    /// Nothing more is wanted: the picture shown is that of the instant.
    void settled(double seconds);

private:
    void moveEnded(double seconds);
    void startSeek(double seconds);
    void startStep(FrameStep direction);
    void stop();

    MediaPlayer &m_player;
    bool m_isMoving = false;
    std::optional<double> m_underWay;
    std::optional<double> m_wanted;
    /// Pictures to go on, or back where negative.
    int m_steps = 0;
};

} // namespace vignar
