#include "imageformats/vipsHandler.h"

#include <QColorSpace>
#include <QIODevice>
#include <QImage>
#include <QVariant>

#include <vips/vips.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace vignar
{

namespace
{

constexpr QByteArrayView jp2Signature{"\0\0\0\x0cjP  \r\n\x87\n", 12};
constexpr QByteArrayView codestreamSignature{"\xff\x4f\xff\x51", 4};

/// Of 1 … 10: from here on the search for a palette costs more time than it saves bytes
/// (1280 × 960: 0.9 s, against 3.9 s at the library's own choice, which is 6 % smaller).
constexpr int gifEffort = 3;

struct Release {
    void operator()(VipsImage *image) const { g_object_unref(image); }
    void operator()(void *memory) const { g_free(memory); }
};
using VipsPicture = std::unique_ptr<VipsImage, Release>;
using VipsMemory = std::unique_ptr<void, Release>;

bool isLibraryReady()
{
    static const bool isReady = [] {
        if (vips_init("vignar") != 0)
            return false;
        // Each picture is handled once: what the library would keep for a next time is
        // memory lost.
        vips_cache_set_max(0);
        // With several threads the error of a tile is sometimes lost between them, and half a
        // picture (1 in 30 to 1 in 1000 tries) passes for a whole one with black in it.
        vips_concurrency_set(1);
        return true;
    }();
    return isReady;
}

bool complain(const char *what)
{
    qWarning("%s: %s", what, vips_error_buffer());
    vips_error_clear();
    return false;
}

QImage inWrittenFormat(const QImage &image)
{
    QImage picture = image;
    const QColorSpace space = picture.colorSpace();
    if (space.isValid() && space != QColorSpace(QColorSpace::SRgb))
        picture.convertToColorSpace(QColorSpace::SRgb);
    if (picture.format() == QImage::Format_Grayscale8)
        return picture;
    return picture.convertToFormat(picture.hasAlphaChannel() ? QImage::Format_RGBA8888
                                                             : QImage::Format_RGB888);
}

/// The rows one after another without a gap.
QByteArray packedPixels(const QImage &picture)
{
    const qsizetype rowBytes = qsizetype(picture.width()) * picture.depth() / 8;
    QByteArray pixels(rowBytes * picture.height(), Qt::Uninitialized);
    for (int y = 0; y < picture.height(); ++y)
        std::memcpy(pixels.data() + y * rowBytes, picture.constScanLine(y), size_t(rowBytes));
    return pixels;
}

/// A view of the pixels, which must outlive it.
VipsPicture viewOf(const QByteArray &pixels, const QSize &size, int bands)
{
    const VipsPicture plain(vips_image_new_from_memory(pixels.constData(), size_t(pixels.size()),
                                                       size.width(), size.height(), bands,
                                                       VIPS_FORMAT_UCHAR));
    VipsImage *named = nullptr;
    if (plain)
        vips_copy(plain.get(), &named, "interpretation",
                  bands == 1 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB, nullptr);
    return VipsPicture(named);
}

/// Opens without decoding; the bytes must outlive the picture.
VipsPicture openedPicture(const QByteArray &bytes)
{
    VipsImage *loaded = nullptr;
    vips_jp2kload_buffer(const_cast<char *>(bytes.constData()), size_t(bytes.size()), &loaded,
                         "fail_on", VIPS_FAIL_ON_WARNING, nullptr);
    return VipsPicture(loaded);
}

QSize sizeOf(const VipsPicture &picture)
{
    return {vips_image_get_width(picture.get()), vips_image_get_height(picture.get())};
}

/// The picture with 3 or 4 bands of 8 bits; null when it has no such meaning.
VipsPicture inScreenColours(const VipsPicture &picture)
{
    VipsImage *converted = nullptr;
    if (vips_colourspace(picture.get(), &converted, VIPS_INTERPRETATION_sRGB, nullptr) != 0)
        return {};
    const VipsPicture owned(converted);
    VipsImage *bytes = nullptr;
    const int bands = vips_image_get_bands(converted);
    if (bands == 3 || bands == 4)
        vips_cast(converted, &bytes, VIPS_FORMAT_UCHAR, nullptr);
    return VipsPicture(bytes);
}

} // namespace

bool VipsHandler::canRead(QIODevice *device)
{
    if (!device)
        return false;
    const QByteArray start = device->peek(jp2Signature.size());
    return start == jp2Signature || start.startsWith(codestreamSignature);
}

bool VipsHandler::read(QImage *image)
{
    if (!isLibraryReady())
        return complain("libvips");
    const QByteArray bytes = device()->readAll();
    const VipsPicture opened = openedPicture(bytes);
    const VipsPicture picture = opened ? inScreenColours(opened) : VipsPicture();
    if (!picture)
        return complain("JPEG 2000");
    const int bands = vips_image_get_bands(picture.get());
    // Asked before decoding, because it also refuses what would not fit into memory.
    if (!allocateImage(sizeOf(picture),
                       bands == 4 ? QImage::Format_RGBA8888 : QImage::Format_RGB888, image))
        return false;
    size_t length = 0;
    const VipsMemory pixels(vips_image_write_to_memory(picture.get(), &length));
    const size_t rowBytes = size_t(image->width()) * size_t(bands);
    if (!pixels || length != rowBytes * size_t(image->height()))
        return complain("JPEG 2000");
    for (int y = 0; y < image->height(); ++y)
        std::memcpy(image->scanLine(y), static_cast<char *>(pixels.get()) + size_t(y) * rowBytes,
                    rowBytes);
    return true;
}

bool VipsHandler::write(const QImage &image)
{
    if (!isLibraryReady())
        return complain("libvips");
    const QImage coloured = inWrittenFormat(image);
    const QByteArray pixels = packedPixels(coloured);
    const VipsPicture picture = viewOf(pixels, coloured.size(), coloured.depth() / 8);
    if (!picture)
        return complain("libvips");
    void *buffer = nullptr;
    size_t length = 0;
    int status = 0;
    if (format() == "gif")
        status = vips_gifsave_buffer(picture.get(), &buffer, &length, "effort", gifEffort, nullptr);
    else if (m_quality < 0)
        status = vips_jp2ksave_buffer(picture.get(), &buffer, &length, "lossless", TRUE, nullptr);
    else
        status = vips_jp2ksave_buffer(picture.get(), &buffer, &length, "Q",
                                      std::clamp(m_quality, 1, 100), nullptr);
    const VipsMemory encoded(buffer);
    if (status != 0)
        return complain(format().constData());
    return device()->write(static_cast<const char *>(buffer), qint64(length)) == qint64(length);
}

bool VipsHandler::supportsOption(ImageOption option) const
{
    return option == Quality || option == Size;
}

QVariant VipsHandler::option(ImageOption option) const
{
    if (option == Quality)
        return m_quality;
    if (option != Size || !canRead() || !isLibraryReady())
        return {};
    const QByteArray bytes = device()->peek(device()->bytesAvailable());
    const VipsPicture picture = openedPicture(bytes);
    return picture ? QVariant(sizeOf(picture)) : QVariant();
}

void VipsHandler::setOption(ImageOption option, const QVariant &value)
{
    if (option == Quality)
        m_quality = value.toInt();
}

} // namespace vignar
