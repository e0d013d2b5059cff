#pragma once

#include "classShared/sourceDico.h"

#include <QByteArray>
#include <QImage>

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

/// Notes in a JPEG picture, as a comment, that its matrix is the given one: loadedPicture()
/// heeds that, and no picture is encoded again. False when it cannot be; it is then as it
/// was. Any thread.
bool noteMatrix(const QString &picture, const LumaWeights &matrix);

/// What noteMatrix() has noted in a file's content.
std::optional<LumaWeights> notedMatrix(const QByteArray &jpeg);

/// A JPEG picture of that matrix as RGB32, decoded at a size that the library offers, which is
/// that of the picture or a part of it in eighths. Null where it cannot be decoded.
QImage pictureOfMatrix(const QByteArray &jpeg, const QSize &size, const LumaWeights &matrix);

} // namespace vignar
