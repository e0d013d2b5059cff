#pragma once

#include "analysis/mpegInfo.h"
#include "classShared/keys.h"

namespace vignar
{

/// What the analysis asks the MPEG reader for.
class mpeginfoFunction
{
public:
    /// A reader over the first byte of the file.
    static vignar::mpegInfo mpegInfo(const QString &path);

    /// Container, first video stream and, of an elementary stream, duration and start of the
    /// source, with the keys of its record; nothing, with a log line that says why, where
    /// it is no MPEG video. Reads the file (see mpegInfo for how much of it).
    static std::optional<Dico> mpegInfoDico(const QString &path);
};

} // namespace vignar
