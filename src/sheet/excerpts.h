#pragma once

#include <QStringList>

namespace vignar
{

/// True when a program is an ffmpeg that opens excerpts: from version 5.0 on. Unless its words
/// have been heard, it is run once for its answer; this waits for it. Any thread.
bool opensExcerpts(const QString &ffmpeg);

/// Hears what a program has said in one of its runs. Any thread.
void hearVersion(const QString &ffmpeg, const QString &report);

/// A piece of a source that ffmpeg reads as if nothing else were there. All in seconds.
struct Excerpt {
    /// Where its clock is at zero. No picture shown before it comes.
    double zero = 0;
    /// Where reading begins: with the last key picture up to there.
    double start = 0;
    /// Nothing is read that is decoded from here on.
    double end = 0;
    /// Reading begins with the last picture of any kind instead.
    bool startsAnywhere = false;
};

/// The options, from "-itsoffset" to "-i" and its argument, with which ffmpeg reads of a source
/// only an excerpt and comes to an end there: a decoder that holds pictures back to put them in
/// order then hands them out. Nothing is decoded at opening. Empty for a path that cannot be
/// told so.
QStringList excerptInput(const QString &srcPath, const Excerpt &excerpt);

} // namespace vignar
