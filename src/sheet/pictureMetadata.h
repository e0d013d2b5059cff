#pragma once

#include "classShared/result.h"

#include <QByteArray>

namespace vignar
{

/// What a picture or document says about itself. Empty texts are left out.
struct PictureMetadata {
    QString title;
    /// Name of the file that it was made from.
    QString source;
    /// Says who has made it even where it has no texts.
    bool isSigned = false;

    bool isEmpty() const { return title.isEmpty() && source.isEmpty() && !isSigned; }
};

/// Of a picture that says nothing but who has made it.
inline const PictureMetadata signedMetadata{.isSigned = true};

/// "Vignar" and its version.
QString softwareName();

/// An encoded JPEG, PNG, WebP, TIFF or JPEG 2000 picture (sRGB) with its metadata added as
/// EXIF and as XMP, the names of the texts being those that photo programs show:
/// ImageDescription and dc:title, DocumentName and dc:source, Software and
/// xmp:CreatorTool. Characters that neither can hold become blanks. The reason of a
/// failure is the library's and meant for the log.
Result<QByteArray> withMetadata(const QByteArray &picture, const PictureMetadata &metadata);

} // namespace vignar
