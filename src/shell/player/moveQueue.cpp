#include "shell/player/moveQueue.h"

namespace vignar
{

MoveQueue::MoveQueue(MediaPlayer &player) : m_player(player)
{
    connect(&player, &MediaPlayer::moveEnded, this, &MoveQueue::moveEnded);
    connect(&player, &MediaPlayer::failed, this, &MoveQueue::stop);
}

std::optional<double> MoveQueue::destination() const
{
    return m_wanted ? m_wanted : m_underWay;
}

void MoveQueue::open(const QString &path, double seconds)
{
    m_isMoving = true;
    m_underWay = seconds;
    m_player.open(path, seconds);
}

void MoveQueue::seek(double seconds)
{
    m_steps = 0;
    if (m_isMoving)
        m_wanted = seconds;
    else
        startSeek(seconds);
}

void MoveQueue::step(FrameStep direction)
{
    if (m_isMoving)
        m_steps += direction == FrameStep::forward ? 1 : -1;
    else
        startStep(direction);
}

void MoveQueue::startSeek(double seconds)
{
    m_isMoving = true;
    m_underWay = seconds;
    m_player.seek(seconds);
}

void MoveQueue::startStep(FrameStep direction)
{
    m_isMoving = true;
    m_player.step(direction);
}

void MoveQueue::moveEnded(double seconds)
{
    m_isMoving = false;
    m_underWay.reset();
    if (m_wanted) {
        startSeek(*std::exchange(m_wanted, {}));
    } else if (m_steps != 0) {
        const bool isForward = m_steps > 0;
        m_steps += isForward ? -1 : 1;
        startStep(isForward ? FrameStep::forward : FrameStep::back);
    } else {
        Q_EMIT settled(seconds);
    }
}

void MoveQueue::stop()
{
    m_isMoving = false;
    m_underWay.reset();
    m_wanted.reset();
    m_steps = 0;
}

} // namespace vignar
