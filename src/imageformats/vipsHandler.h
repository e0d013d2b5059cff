#pragma once

#include <QImageIOHandler>

namespace vignar
{

/// Writes GIF and JPEG 2000 and reads JPEG 2000, 8 bits a sample, through libvips. A
/// picture with an alpha channel keeps it, in GIF as fully transparent pixels.
///
/// JPEG 2000 is written without loss unless a quality of 0 … 100 is set. Colours are
/// taken to sRGB, which both formats mean when they hold no profile.
class VipsHandler : public QImageIOHandler
{
public:
    /// True for the signatures of JPEG 2000, as a file or as a bare code stream.
    static bool canRead(QIODevice *device);

    bool canRead() const override { return canRead(device()); }
    bool read(QImage *image) override;
    bool write(const QImage &image) override;
    bool supportsOption(ImageOption option) const override;
    QVariant option(ImageOption option) const override;
    void setOption(ImageOption option, const QVariant &value) override;

private:
    int m_quality = -1;
};

} // namespace vignar
