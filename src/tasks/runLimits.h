#pragma once

#include <QtGlobal>

#include <algorithm>
#include <chrono>

namespace vignar
{

/// What one process of a tool may use up; the kernel holds it to these. A limit that the
/// program itself is under already stays where it is lower.
///
/// The number of processes is not among them: the kernel counts those of all the user's
/// programs together, so that a limit here would fail or not by what else is running.
struct RunLimits {
    static constexpr qint64 gigabyte = qint64{1} << 30;

    /// Bytes that it may allocate. Its address space may hold one gigabyte more, for the
    /// libraries and what the allocator reserves without using it.
    qint64 memory = 4 * gigabyte;
    /// Largest file that it may write, in bytes. Writing on fails; the tool is not killed.
    qint64 fileSize = 2 * gigabyte;
    /// Processor time of all its threads together.
    std::chrono::seconds processorTime{600};
    /// Files open at once. ffmpeg with fourteen inputs and as many outputs needs 35.
    int openFiles = 64;
};

/// Limits of the analysis run, which writes decoded pictures that it cannot know the size of:
/// ten of 8K are 500 MB. Nothing is lost with what is cut off, because its header and one whole
/// picture tell all.
inline RunLimits probeLimits()
{
    return {.fileSize = RunLimits::gigabyte * 6 / 10};
}

/// Limits of each of so many processes that take pictures at once: they share the memory of
/// one, but each has enough for pictures of 4K with a thread for each of sixteen cores.
inline RunLimits pictureLimits(int processes)
{
    const qint64 share = RunLimits().memory / std::max(1, processes);
    return {.memory = std::max(share, RunLimits::gigabyte * 3 / 2)};
}

/// How long the work on one source may take: 10 minutes and one minute for each thumbnail, in
/// the parts below. It fails when a part takes longer.
namespace SourceBudget
{

/// ffmpeg's report on the source.
inline constexpr std::chrono::minutes report{4};
/// The record: the further readers and probes, a bare stream that is read through included.
inline constexpr std::chrono::minutes record{4};
/// All attempts at the poster together.
inline constexpr std::chrono::minutes poster{2};
/// Each thumbnail; the sheet has that of all of them together.
inline constexpr std::chrono::minutes thumbnail{1};

/// Longest time that the taking of one picture may take, after which it is tried in another
/// way.
inline constexpr std::chrono::seconds picture{120};

} // namespace SourceBudget

} // namespace vignar
