#pragma once

#include "classShared/sourceDico.h"

#include <optional>

namespace vignar
{

/// The shares of red and blue in the luma of a colour matrix; green has the rest.
struct LumaWeights {
    double red;
    double blue;
};

/// The colour matrix of the pictures that a plain pass leaves of a source, where it is
/// another than the BT.601 that every reader of a JPEG picture assumes; else nothing.
/// ffmpeg keeps the matrix of the source, and the file cannot tell it.
std::optional<LumaWeights> foreignMatrix(const SourceDico &source);

/// Rewrites a JPEG picture whose matrix is the given one so that it is BT.601. False when
/// it cannot be read or written; it is then as it was. Any thread.
bool convertToJpegMatrix(const QString &picture, const LumaWeights &from);

} // namespace vignar
