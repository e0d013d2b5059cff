#pragma once

#include "classShared/format.h"

#include <functional>

namespace vignar
{

/// Where finished log lines go. Called with one line without its line end, from
/// any thread, one call at a time. A line that the sink itself logs goes to standard
/// error.
using LogSink = std::function<void(const QString &line)>;

/// Replaces the sink and returns the one before; an empty sink restores the
/// default, which writes each line to standard error.
LogSink setLogSink(LogSink sink);

/// The user's detailed-logging flag: off at start, never stored. Thread-safe.
bool isDebug();
void setDebug(bool isOn);

/// The developers' switch, off in every build that leaves the house. It gates the
/// lines called verbose and the notices meant for developers.
constexpr bool isVerbose()
{
    return false;
}

/// Writes one line to the log. Thread-safe.
void writeLogLine(const QString &line);

/// Writes a line whatever the flags; the format is filled as filled() says.
template <class... Values>
void logLine(QStringView format, const Values &...values)
{
    writeLogLine(filled(format, values...));
}

/// Writes a line only while detailed logging is on.
template <class... Values>
void logDebug(QStringView format, const Values &...values)
{
    if (isDebug())
        writeLogLine(filled(format, values...));
}

/// Writes a line only with the developers' switch.
template <class... Values>
void logVerbose(QStringView format, const Values &...values)
{
    if constexpr (isVerbose())
        writeLogLine(filled(format, values...));
}

/// How a folder below the alerts asks for a self-closing notice: title, text and
/// seconds. Every notice is logged; without a handler it is only logged.
using NoticeHandler = std::function<void(const QString &title, const QString &text, int seconds)>;
void setNoticeHandler(NoticeHandler handler);
void notice(const QString &title, const QString &text, int seconds);

} // namespace vignar
