#pragma once

#include <QByteArray>
#include <QString>

namespace vignar
{

/// A format of picture files.
struct PictureFormat {
    /// As QImageWriter calls it.
    const char *codec;
    bool keepsTransparency = false;
    /// Pixels a side that the format, or its library, can hold; 0: more than a picture has.
    int largestSide = 0;
};

inline constexpr PictureFormat jpegFormat{"jpeg", false, 65500};
inline constexpr PictureFormat pngFormat{"png", true};
inline constexpr PictureFormat webpFormat{"webp", true, 16383};
inline constexpr PictureFormat tiffFormat{"tiff", true};
inline constexpr PictureFormat bmpFormat{"bmp"};
inline constexpr PictureFormat gifFormat{"gif", true, 65535};
inline constexpr PictureFormat jpeg2000Format{"jp2", true};

/// The format that a file's extension asks for, whatever its case; JPEG for those that
/// are not ours to write.
const PictureFormat &formatOfExtension(const QString &path);

/// True for "pdf", whatever its case.
bool isPdfExtension(const QString &path);

/// Where our plugin for QImageWriter and QImageReader is: lib/vignar beside the program's
/// bin folder.
QString imagePluginFolder();

/// True when the codec can be written. Adds our plugin only once the toolkit's own do not
/// know the codec: a plugin that is known is loaded with its library, whatever picture is
/// looked at next.
bool canWriteCodec(const QByteArray &codec);

/// Makes JPEG 2000 readable where a file's first bytes are of that format.
void prepareReading(const QString &path);

} // namespace vignar
