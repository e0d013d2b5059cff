#pragma once

#include "classShared/result.h"
#include "classShared/sourceDico.h"

namespace vignar
{

/// What a poster was made of: of an intra picture, or of any because no intra picture came.
enum class PosterPicture { intra, any };

/// Seconds into the source at which its poster is taken: 120, 60 or 10 where it is
/// longer than that, else its start.
double posterPosition(const SourceDico &source);

/// Writes the poster, 160 pixels wide, and waits for it, or says why there is none; on any
/// thread. The last attempt reads
/// the source from its start without a seek, for files whose end or index is missing.
Result<PosterPicture> makePoster(const SourceDico &source, const QString &path);

} // namespace vignar
