#pragma once

#include <QImage>

namespace vignar
{

/// A drawn picture that stands for one of count thumbnails of a film: a day by the sea and
/// in the hills, from its morning to its night. The same arguments draw the same picture;
/// any size in pixels, 1 × 1 or more.
QImage sampleFrame(int index, int count, const QSize &size);

} // namespace vignar
