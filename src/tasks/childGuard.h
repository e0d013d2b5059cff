#pragma once

#include "tasks/runLimits.h"

#include <sys/types.h>

namespace vignar
{

/// What a child process does between fork and exec, where nothing but system calls is
/// allowed: all that these need is made ready beforehand.
///
/// A session of its own keeps a Ctrl-C on our terminal away from it. On Linux the kernel
/// promises that it dies with the thread that started it, kill -9 included.
class ChildGuard
{
public:
    ChildGuard();

    /// In the child.
    void bindToParent() const;

private:
    pid_t m_parent;
};

/// The guard of a tool: it also has limits, gains no rights by what it executes, and on Linux
/// opens no socket and looks into no other process.
class ToolGuard : public ChildGuard
{
public:
    explicit ToolGuard(const RunLimits &limits) : m_limits(limits) {}

    /// In the child.
    void apply() const;

private:
    RunLimits m_limits;
};

} // namespace vignar
