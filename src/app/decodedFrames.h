#pragma once

#include <QString>

namespace vignar
{

/// Localised field order that the header of a decoded "frame.yuv" tells; empty when it
/// tells none (mixed or unknown).
QString fieldOrderOfFrames(const QString &framePath);

/// True when the file holds at least one whole picture behind its header.
bool holdsDecodedFrame(const QString &framePath);

} // namespace vignar
