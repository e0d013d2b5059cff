#pragma once

#include <QStringList>

namespace vignar
{

/// True when a program is an ffmpeg that opens excerpts: from version 5.0 on. Unless its words
/// have been heard, it is run once for its answer; this waits for it. Any thread.
bool opensExcerpts(const QString &ffmpeg);

/// Hears what a program has said in one of its runs. Any thread.
void hearVersion(const QString &ffmpeg, const QString &report);

/// The options, from "-protocol_whitelist" to "-i" and its argument, with which ffmpeg reads
/// of a source only what is between two instants (seconds), and comes to an end there: a
/// decoder that holds pictures back to put them in order then hands them out. Times count
/// from the first instant, and no picture before it comes. Nothing is decoded at opening.
/// Empty for a path that cannot be told so.
QStringList excerptInput(const QString &srcPath, double start, double end);

} // namespace vignar
