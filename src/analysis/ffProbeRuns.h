#pragma once

#include <QString>

#include <chrono>

namespace vignar
{

/// The probes that run a tool on the source, wait for it and read one fact from its text
/// (ffProbes.h). Source paths are absolute. Each answers its neutral value when the tool
/// is missing, fails, or is killed at its limit; none tells the user anything.

/// Longest time for what reads little of the source: its head, or a few seconds of it.
inline constexpr std::chrono::seconds shortProbeLimit{100};
/// Passes of the interlace detector, each on 4 seconds of the source. At worst all of them
/// are killed, after 10 minutes together.
inline constexpr int idetPasses = 6;

/// True when the report, or in its absence a run over the first 35 pictures, shows that
/// decoding repeats pictures. forcedFormat: name of a demultiplexer, empty for ffmpeg's choice.
bool isFfmpegVsync(const QString &srcPath, const QString &report, const QString &forcedFormat = {});

/// Localised field order of decoded pictures, from the first pass that decides; null when
/// none does. The first 4 seconds are not looked at.
QString ffVfIdet(const QString &srcPath);

/// Whole seconds of an MPEG elementary stream; 1 on failure. ffmpeg reads the whole file,
/// without decoding it; a file that takes longer than blockingRunLimitMs counts as a failure.
int durationM2v(const QString &srcPath);

/// The same of the first bytes of a source that plays from its beginning on.
int durationOfHead(const QString &srcPath, qint64 bytes);

/// True when ffmpeg has nothing to complain of (isFfmpegSuccess()) while it decodes 5 seconds
/// of sound, if need be with the format of forceFormat(). So it has of a source without sound.
bool isFfmpegSuccessAudio(const QString &srcPath);

/// Name of the demultiplexer to force, by the answer of /usr/bin/file on the source, else by
/// the report; null for ffmpeg's own choice.
QString forceFormat(const QString &srcPath, const QString &report);

/// True for an MPEG transport stream. Without a report ffmpeg is asked.
bool isMpegTs(const QString &srcPath, const QString &report);

/// Version of ffmpeg, 0 when there is none.
float ffRevision();

} // namespace vignar
