#pragma once

#include "classShared/sourceDico.h"

namespace vignar
{

/// Which pictures a poster may be made of.
enum class PosterPicture { intra, any };

/// Seconds into the source at which its poster is taken: 120, 60 or 10 where it is
/// longer than that, else its start.
double posterPosition(const SourceDico &source);

/// Writes the poster, 160 pixels wide, and waits for it. False when the tool leaves no
/// picture. any also tries the source's start without a seek, for
/// files whose end or index is missing.
bool makePoster(const SourceDico &source, const QString &path, PosterPicture picture);

} // namespace vignar
