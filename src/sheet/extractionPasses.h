#pragma once

#include "classShared/sourceDico.h"

#include <QSize>
#include <QStringList>

namespace vignar
{

struct ThumbnailPlan;

/// True when the source is grabbed by the movie framework's program and not by ffmpeg.
bool usesMovieGrabber(const SourceDico &source);

/// "<folder>/img07.jpg".
QString thumbnailPath(const QString &folder, int index);

/// The number in a picture's file name, -1 for another name.
int thumbnailIndex(const QString &path);

/// The filter text of a source's pictures: intra selection, de-interlacing, tone mapping,
/// scaling.
QString thumbnailFilter(const SourceDico &source, const QSize &size);

/// The tone mapping by itself, as ffmpegPath() can do it; empty for standard range.
QString standardRange(const SourceDico &source, const QSize &size);

/// The argument list that takes one picture at an instant (seconds).
QStringList ffmpegPass(const SourceDico &source, double instant, const QString &filter,
                       const QString &outputPath);

/// The argument list that takes the very picture shown at an instant, of any type: it
/// decodes up to it from well before, as a seek may land behind it.
QStringList exactPass(const SourceDico &source, double instant, const QString &filter,
                      const QString &outputPath);

/// The same pass free to take any picture, for where the intra selection found none;
/// the list itself when it selects nothing.
QStringList withoutIntraSelection(const QStringList &pass);

/// The same pass with a run-up: the source is entered 30 seconds before the instant, or at
/// its start, and decoded from there. Slower, but it finds the picture where the seek
/// lands behind the last key frame or the file has lost its index. The list itself when
/// it runs up already.
QStringList withRunUp(const QStringList &pass);

/// What to try after a pass that left no picture: without the intra selection, then with
/// a run-up; empty when everything has been tried.
QStringList nextAttempt(const QStringList &pass);

/// The argument list that grabs all pictures in one run.
QStringList grabberPass(const SourceDico &source, const ThumbnailPlan &plan, const QString &folder);

} // namespace vignar
