#pragma once

#include "classShared/sourceDico.h"

#include <QList>

#include <functional>
#include <optional>

namespace vignar
{

/// Which of several video streams a source is shown by: the one that ffmpeg takes by itself,
/// unless it holds but a few pictures beside a stream of many, as the still of a motion photo
/// does. Pictures that are merely attached to a source are no video streams here.

/// A stream of fewer pictures than this is a still, or a few of them.
inline constexpr int fewPictures = 10;

/// How many pictures a stream (ffmpeg's index) of the source holds, counted up to
/// fewPictures.
using PictureCounter = std::function<int(int stream)>;

/// ffmpeg's indices of the video streams in a report, in its own order of preference. The one
/// that the report says was decoded comes first; without that line the order is that of the
/// pixels, where the flag "default" weighs as much as five million of them.
QList<int> videoStreams(const QString &report);

/// The stream to show a source by; nothing where it has no choice. Counts no more streams
/// than it takes to decide.
std::optional<int> pictureStream(const QString &report, const PictureCounter &countPictures);

/// Renumbers the video streams of a record so that the one of this index is v0; the others
/// follow in the order they had.
void putFirst(int stream, Dico &infos);

/// Runs ffmpeg (blocking) over the beginning of a stream, without decoding it. What has been
/// counted when it takes too long counts.
int picturesOfStream(const QString &srcPath, int stream);

} // namespace vignar
