#include "shell/remainingTime.h"

namespace vignar
{

void RemainingTime::start(Duration now)
{
    m_start = now;
    m_paused = Duration(0);
    m_pauseStart.reset();
}

void RemainingTime::pause(Duration now)
{
    if (!m_pauseStart)
        m_pauseStart = now;
}

void RemainingTime::resume(Duration now)
{
    if (m_pauseStart)
        m_paused += now - *m_pauseStart;
    m_pauseStart.reset();
}

std::optional<RemainingTime::Duration> RemainingTime::estimate(Duration now, double done) const
{
    const Duration worked = now - m_start - m_paused;
    if (m_pauseStart || worked < shortestBasis || done <= 0 || done > 1)
        return std::nullopt;
    return Duration(static_cast<Duration::rep>(double(worked.count()) * (1 - done) / done));
}

} // namespace vignar
