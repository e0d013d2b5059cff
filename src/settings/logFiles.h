#pragma once

#include <QString>

namespace vignar
{

/// "Details.log" and "Resume.log" in the log folder.
QString detailedLogPath();
QString summaryLogPath();

/// Creates the summary log when missing, then appends the text unless it is null.
/// What appendTextToFile() returns; 0 for a null text.
int summaryLogAppend(const QString &text);

/// Keeps what is appended to the summary log from now on until its release, which appends
/// it in one piece: the lines on one source stay together where several processes write.
/// Main thread only.
void holdSummaryLog();
void releaseSummaryLog();

/// Appends text as UTF-8, creating the file first (with a byte-order mark when asked).
/// 1, or 0 for an empty path or text and when the file cannot be written.
int appendTextToFile(const QString &path, const QString &text, bool withBom);

/// Sends the process's standard output and error to the file, once per process.
void redirectStdoutToFile(const QString &path);

/// What becomes of the standard streams when the logs start.
enum class StandardStreams { redirect, keep };

/// Creates the log folder, keeps the logs of the last run as "Previous-…" and starts
/// new ones. With keep, log lines go to the detailed log alone and the streams stay
/// the caller's; where another process is still writing logs in the same folder they
/// are continued instead of rotated.
void startLogs(StandardStreams streams);

} // namespace vignar
