#pragma once

#include <QStringList>

namespace vignar
{

/// The demuxers, by ffmpeg's names and separated by commas, that a source may be read by:
/// those of the declared extensions, and of what is found in files of these extensions all
/// the same. None of them opens another file.
QString sourceDemuxers();

/// The arguments of ffmpeg with each input kept to its one local file, and no single
/// allocation larger than any video needs. A list, a script or a playlist in place of a video
/// is then refused, whatever its extension. An input that has a protocol list of its own
/// keeps it, and is read by "concat" where it says so. Arguments without an input stay as they
/// are.
QStringList confinedToSources(const QStringList &arguments);

} // namespace vignar
