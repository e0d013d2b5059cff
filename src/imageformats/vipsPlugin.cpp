#include "imageformats/vipsHandler.h"

#include <QImageIOPlugin>

namespace vignar
{

/// Offers what libvips does to QImageWriter and QImageReader. GIF is written only: the
/// toolkit reads it by itself.
class VipsPlugin : public QImageIOPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QImageIOHandlerFactoryInterface_iid FILE "vips.json")

public:
    Capabilities capabilities(QIODevice *device, const QByteArray &format) const override
    {
        if (format.isEmpty())
            return VipsHandler::canRead(device) ? Capabilities(CanRead) : Capabilities();
        if (format == "gif")
            return CanWrite;
        const bool isJpeg2000 = format == "jp2" || format == "jpx" || format == "j2k";
        return isJpeg2000 ? CanRead | CanWrite : Capabilities();
    }

    QImageIOHandler *create(QIODevice *device, const QByteArray &format) const override
    {
        auto handler = std::make_unique<VipsHandler>();
        handler->setDevice(device);
        handler->setFormat(format);
        return handler.release();
    }
};

} // namespace vignar

#include "vipsPlugin.moc"
