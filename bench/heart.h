#pragma once

#include <QElapsedTimer>
#include <QList>
#include <QTimer>

#include <algorithm>

/// How late each beat of a precise timer came, in milliseconds.
class Heart
{
public:
    static constexpr int beat = 5;

    Heart()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.callOnTimeout([this] {
            m_delays.append(std::max(0.0, 1e-6 * double(m_clock.nsecsElapsed()) - beat));
            m_clock.start();
        });
        m_clock.start();
        m_timer.start(beat);
    }

    qsizetype beats() const { return m_delays.size(); }
    QList<double> sortedDelays()
    {
        std::sort(m_delays.begin(), m_delays.end());
        return m_delays;
    }

private:
    QTimer m_timer;
    QElapsedTimer m_clock;
    QList<double> m_delays;
};
