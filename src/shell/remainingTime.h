#pragma once

#include <chrono>
#include <optional>

namespace vignar
{

/// Estimates when a run will be over from how far it has come. The caller's clock goes
/// in, so that nothing here waits.
class RemainingTime
{
public:
    using Duration = std::chrono::milliseconds;

    /// Before this much work was seen nothing is estimated: the first pictures of a run
    /// say little about the others.
    static constexpr Duration shortestBasis{4000};

    void start(Duration now);
    /// Time between the two is no work.
    void pause(Duration now);
    void resume(Duration now);

    /// done is 0 to 1. Nothing while it cannot be known, or paused.
    std::optional<Duration> estimate(Duration now, double done) const;

private:
    Duration m_start{0};
    Duration m_paused{0};
    std::optional<Duration> m_pauseStart;
};

} // namespace vignar
