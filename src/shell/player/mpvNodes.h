#pragma once

#include <QList>
#include <QSize>

struct mpv_node;

namespace vignar
{

/// Read from the answers of libmpv; what they lack is left out.

/// Size of a picture in square pixels.
QSize pictureSize(const mpv_node &parameters);
/// Quarter turns clockwise, 0 to 3, that the pictures of the file want; a turn in between
/// is none.
int quarterTurns(const mpv_node &tracks);
/// Seconds, ascending.
QList<double> chapterStarts(const mpv_node &chapters);
bool holdsAudio(const mpv_node &tracks);

} // namespace vignar
