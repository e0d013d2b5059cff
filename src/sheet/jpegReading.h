#pragma once

#include <QImage>
#include <QSize>

class QString;

namespace vignar
{

/// A JPEG picture in colour, as RGB32, averaged down to a size unless that is empty. Takes
/// a fraction of the time that QImageReader takes, and gives what that gives where the
/// picture becomes smaller by half or more; what the file tells beside its pixels is left
/// out. Null for every other file and for damaged ones, which are QImageReader's.
QImage jpegPicture(const QString &path, const QSize &size = {});

/// True for a JPEG file that was written to its end and decodes without a complaint. A file
/// that is still being written, or that lost a part to a full disk or a killed tool, is not
/// whole. Costs a decode at an eighth of the size.
bool isWholeJpeg(const QString &path);

} // namespace vignar
