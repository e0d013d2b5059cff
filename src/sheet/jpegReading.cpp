#include "sheet/jpegReading.h"

#include "sheet/pictureMatrix.h"
#include "sheet/turboJpeg.h"

#include <QFile>

#include <algorithm>
#include <cmath>

namespace vignar
{

namespace
{

/// Larger pictures than the passes write are nobody's hurry.
constexpr int largestSide = 16384;

/// The size to decode at: the library shrinks to eighths, of which it has quick forms of
/// these only, and what is wanted must not exceed it.
QSize decodedSize(const QSize &stored, const QSize &wanted)
{
    if (wanted.isEmpty())
        return stored;
    const double shrinking = std::min(double(stored.width()) / wanted.width(),
                                      double(stored.height()) / wanted.height());
    int eighths = 1;
    while (eighths < 8 && eighths * shrinking < 8)
        eighths *= 2;
    const tjscalingfactor factor{eighths, 8};
    return {TJSCALED(stored.width(), factor), TJSCALED(stored.height(), factor)};
}

/// A picture that is known by its header: its size, or an empty one where it is not ours.
QSize storedSize(tjhandle turbo, const QByteArray &content)
{
    const auto *bytes = reinterpret_cast<const uchar *>(content.constData());
    const auto length = static_cast<unsigned long>(content.size());
    QSize size;
    int subsampling = 0;
    int colours = 0;
    if (tjDecompressHeader3(turbo, bytes, length, &size.rwidth(), &size.rheight(), &subsampling,
                            &colours) != 0 ||
        colours != TJCS_YCbCr || std::max(size.width(), size.height()) > largestSide)
        return {};
    return size;
}

QImage plainPicture(tjhandle turbo, const QByteArray &content, const QSize &size)
{
    QImage picture(size, QImage::Format_RGB32);
    if (picture.isNull() ||
        tjDecompress2(turbo, reinterpret_cast<const uchar *>(content.constData()),
                      static_cast<unsigned long>(content.size()), picture.bits(), size.width(),
                      int(picture.bytesPerLine()), size.height(), nativePixels, 0) != 0)
        return {};
    return picture;
}

} // namespace

QImage jpegPicture(const QString &path, const QSize &size)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.peek(2) != QByteArrayView("\xff\xd8"))
        return {};
    const QByteArray content = file.readAll();
    const TurboHandle turbo(tjInitDecompress());
    const QSize stored = turbo ? storedSize(turbo.get(), content) : QSize();
    if (stored.isEmpty())
        return {};
    const QSize decoded = decodedSize(stored, size);
    const auto matrix = notedMatrix(content);
    const QImage picture = matrix ? pictureOfMatrix(content, decoded, *matrix)
                                  : plainPicture(turbo.get(), content, decoded);
    return size.isEmpty() || picture.isNull()
               ? picture
               : picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace vignar
