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
constexpr QByteArrayView startMarker("\xff\xd8");
constexpr QByteArrayView endMarker("\xff\xd9");

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

struct Header {
    /// Empty if there is no header, or the picture is too large.
    QSize size;
    int colours = 0;
};

Header headerOf(tjhandle turbo, const QByteArray &content)
{
    const auto *bytes = reinterpret_cast<const uchar *>(content.constData());
    const auto length = static_cast<unsigned long>(content.size());
    Header header;
    int subsampling = 0;
    if (tjDecompressHeader3(turbo, bytes, length, &header.size.rwidth(), &header.size.rheight(),
                            &subsampling, &header.colours) != 0 ||
        std::max(header.size.width(), header.size.height()) > largestSide)
        return {};
    return header;
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
    if (!file.open(QIODevice::ReadOnly) || file.peek(2) != startMarker)
        return {};
    const QByteArray content = file.readAll();
    const TurboHandle turbo(tjInitDecompress());
    const Header header = turbo ? headerOf(turbo.get(), content) : Header();
    if (header.size.isEmpty() || header.colours != TJCS_YCbCr)
        return {};
    const QSize decoded = decodedSize(header.size, size);
    const auto matrix = notedMatrix(content);
    const QImage picture = matrix ? pictureOfMatrix(content, decoded, *matrix)
                                  : plainPicture(turbo.get(), content, decoded);
    return size.isEmpty() || picture.isNull()
               ? picture
               : picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

bool isWholeJpeg(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.peek(2) != startMarker)
        return false;
    const QByteArray content = file.readAll();
    const TurboHandle turbo(tjInitDecompress());
    if (!turbo || !content.endsWith(endMarker))
        return false;
    const QSize stored = headerOf(turbo.get(), content).size;
    if (stored.isEmpty())
        return false;
    constexpr tjscalingfactor eighth{1, 8};
    const QSize size(TJSCALED(stored.width(), eighth), TJSCALED(stored.height(), eighth));
    // The library also fails on what it only warns about, such as a missing part.
    return !plainPicture(turbo.get(), content, size).isNull();
}

} // namespace vignar
