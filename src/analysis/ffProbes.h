#pragma once

#include "classShared/keys.h"

#include <QString>

#include <optional>

namespace vignar
{

/// What the answers to the probes say. Pure readers of text: none runs a tool, and a null
/// text, or one without what is looked for, gives the neutral answer (false, null, nothing,
/// 0, a duration of 1 second). The runs behind them are in ffProbeRuns.h.

/// True when decoding repeated pictures because of a jump in the source's timestamps: the
/// text holds "***", "dup!" and "timestamp discontinuity", all three.
bool isFfmpegVsyncText(const QString &text);

/// "TFF", "BFF" or "PFF" (progressive) from the last count of single frames that the idet
/// filter printed; null when the frames of the pass do not decide.
QString idetFieldOrder(const QString &text);

/// Seconds that ffmpeg had read according to its last progress line, the length of the last
/// picture included where the line counts pictures, truncated. A source of less than a
/// second counts as one: 0 would read as unknown.
int durationM2vFromText(const QString &text);

/// Start of each audio and subtitle stream after the video's, in milliseconds rounded to
/// the nearest, negative where it starts before, under offsetMsKey(). The start of a
/// stream is the first time in its packet trace ("ff_read_packet stream=0, pts=…"), of
/// one packet the presentation time before the decoding time, and 0 where that is
/// negative; a stream without one gets no key. Streams of data and attachments get none;
/// "the" video is the first that is not an attached picture, or of several the one that
/// ffmpeg decoded. Nothing without a video
/// stream that has a start, without an audio stream, and without a trace. Times are
/// divided by the denominator of the stream's time base alone.
std::optional<Dico> ptsDtsOffsetMs(const QString &report);

/// The demultiplexer for a source that the `file` command describes so: "dv", "mpeg" or
/// null.
QString formatOfFileType(const QString &fileType);

/// The demultiplexer for a source whose report shows MPEG video as a stream of data:
/// "mpeg" (system stream), "mpegvideo" (elementary stream) or null.
QString forceFormatLite(const QString &report);

/// True when the last input line of the report names the "mpegts" demultiplexer.
bool isMpegTsText(const QString &report);

/// 5.1 from "ffmpeg version 5.1.9-…". The number of a snapshot says nothing: "N-47683-…"
/// gives -47683.
float ffRevisionOfText(const QString &text);

} // namespace vignar
