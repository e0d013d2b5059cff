#pragma once

#include "classShared/sourceDico.h"

namespace vignar
{

/// What a poster was made of: of an intra picture, of any because no intra picture came, or
/// of nothing because none came at all.
enum class PosterPicture { intra, any, none };

/// Seconds into the source at which its poster is taken: 120, 60 or 10 where it is
/// longer than that, else its start.
double posterPosition(const SourceDico &source);

/// Writes the poster, 160 pixels wide, and waits for it; on any thread. The last attempt reads
/// the source from its start without a seek, for files whose end or index is missing.
PosterPicture makePoster(const SourceDico &source, const QString &path);

} // namespace vignar
