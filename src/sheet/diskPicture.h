#pragma once

#include <QString>

namespace vignar
{

/// Makes the 360 × 480 picture of two extracted pictures, over whatever is at the
/// destination (the caller has asked). False when there is no picture or no writing.
bool multimediaDiskThumb(const QString &pictureFolder, const QString &destination);

} // namespace vignar
