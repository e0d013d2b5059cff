#include "tasks/childGuard.h"

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

#ifdef __linux__
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstddef>
#include <iterator>
#endif

namespace vignar
{

namespace
{

/// Between the limit from which the kernel warns of processor time, once a second, and the one
/// at which it kills. ffmpeg ends in good order at the first warning, else at the fourth.
constexpr rlim_t secondsOfGrace = 10;

/// Lowers a limit, never raises it.
void limit(int resource, rlim_t value, rlim_t hardValue)
{
    rlimit limits{};
    if (::getrlimit(resource, &limits) != 0)
        return;
    limits.rlim_max = std::min(limits.rlim_max, hardValue);
    limits.rlim_cur = std::min({limits.rlim_cur, limits.rlim_max, value});
    ::setrlimit(resource, &limits);
}

void limitMemory(qint64 bytes)
{
    // The address sanitizer maps terabytes, in our own tools too.
#ifndef __SANITIZE_ADDRESS__
    const auto memory = rlim_t(bytes);
    limit(RLIMIT_DATA, memory, memory);
    const rlim_t space = memory + rlim_t(RunLimits::gigabyte);
    limit(RLIMIT_AS, space, space);
#else
    (void)bytes;
#endif
}

void applyLimits(const RunLimits &limits)
{
    limitMemory(limits.memory);
    // A write beyond the limit is to fail; the signal would end the tool in the middle of
    // its report.
    ::signal(SIGXFSZ, SIG_IGN);
    limit(RLIMIT_FSIZE, rlim_t(limits.fileSize), rlim_t(limits.fileSize));
    const auto seconds = rlim_t(limits.processorTime.count());
    limit(RLIMIT_CPU, seconds, seconds + secondsOfGrace);
    limit(RLIMIT_NOFILE, rlim_t(limits.openFiles), rlim_t(limits.openFiles));
    limit(RLIMIT_CORE, 0, 0);
}

#ifdef __linux__

#if defined(__x86_64__)
constexpr __u32 ownArchitecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr __u32 ownArchitecture = AUDIT_ARCH_AARCH64;
#elif defined(__riscv) && __riscv_xlen == 64
constexpr __u32 ownArchitecture = AUDIT_ARCH_RISCV64;
#else
#define VIGNAR_NO_CALL_FILTER
#endif

#ifndef VIGNAR_NO_CALL_FILTER

constexpr sock_filter load(size_t offset)
{
    return BPF_STMT(BPF_LD | BPF_W | BPF_ABS, __u32(offset));
}

/// Goes on with the next instruction when the loaded value is this one, else skips it.
constexpr sock_filter ifEqual(__u32 value)
{
    return BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, value, 0, 1);
}

constexpr sock_filter ifNotEqual(__u32 value)
{
    return BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, value, 1, 0);
}

constexpr sock_filter ifAtLeast(__u32 value)
{
    return BPF_JUMP(BPF_JMP | BPF_JGE | BPF_K, value, 0, 1);
}

constexpr sock_filter answer(__u32 action)
{
    return BPF_STMT(BPF_RET | BPF_K, action);
}

constexpr sock_filter refuse = answer(SECCOMP_RET_ERRNO | EACCES);
/// The calls of the other ABI of x86-64 have this bit, and other numbers.
constexpr __u32 foreignAbiBit = 0x40000000;

/// A source is a local file and so is a picture: no tool has business with a socket of any
/// kind, with rings of operations that this filter does not see, or with other processes.
constexpr sock_filter callFilter[] = {
    load(offsetof(seccomp_data, arch)),
    ifNotEqual(ownArchitecture),
    refuse,
    load(offsetof(seccomp_data, nr)),
    ifAtLeast(foreignAbiBit),
    refuse,
    ifEqual(SYS_socket),
    refuse,
    ifEqual(SYS_connect),
    refuse,
    ifEqual(SYS_io_uring_setup),
    refuse,
    ifEqual(SYS_ptrace),
    refuse,
    ifEqual(SYS_process_vm_readv),
    refuse,
    ifEqual(SYS_process_vm_writev),
    refuse,
    answer(SECCOMP_RET_ALLOW),
};

#endif

/// A kernel without the filter leaves the tool as it was.
void dropRights()
{
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
#ifndef VIGNAR_NO_CALL_FILTER
    const sock_fprog program{.len = std::size(callFilter),
                             .filter = const_cast<sock_filter *>(callFilter)};
    ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
#endif
}

#else

void dropRights() {}

#endif

} // namespace

ChildGuard::ChildGuard() : m_parent(::getpid()) {}

void ChildGuard::bindToParent() const
{
    ::setsid();
#ifdef __linux__
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    // A parent that died before the call above can no longer send its signal.
    if (::getppid() != m_parent)
        ::_exit(127);
#endif
}

void ToolGuard::apply() const
{
    bindToParent();
    applyLimits(m_limits);
    dropRights();
}

} // namespace vignar
