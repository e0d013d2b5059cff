#pragma once

#include "analysis/decodedPicture.h"

#include <QString>

namespace vignar
{

/// Size, pixel aspect and rate of the pictures in a decoded "frame.yuv".
DecodedPicture pictureOfFrames(const QString &framePath);

/// Localised field order that the header of a decoded "frame.yuv" tells; empty when it
/// tells none (mixed or unknown).
QString fieldOrderOfFrames(const QString &framePath);

/// True when the file holds at least one whole picture behind its header.
bool holdsDecodedFrame(const QString &framePath);

} // namespace vignar
