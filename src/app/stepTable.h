#pragma once

#include <QLatin1String>

#include <span>

namespace vignar
{

/// How a step leaves its driver.
enum class StepEnd {
    /// The next pending step follows.
    again,
    /// A tool run was started; its end calls the driver.
    running,
    /// The driver has nothing more to do.
    ended
};

/// One step of a driver: the mark that makes it pending, and what it does.
template <class Driver>
struct Step {
    QLatin1String mark;
    StepEnd (Driver::*perform)();
};

/// The first step in table order whose mark is pending, or null.
template <class Driver, class IsPending>
const Step<Driver> *firstPending(std::span<const Step<Driver>> table, IsPending isPending)
{
    for (const Step<Driver> &step : table) {
        if (isPending(step.mark))
            return &step;
    }
    return nullptr;
}

} // namespace vignar
