#include "sheet/pictureMetadata.h"

#include "classShared/lineLog.h"
#include "settings/applicationPlaces.h"

#include <exiv2/exiv2.hpp>

#include <string>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

/// Of Exif.Photo.ColorSpace.
constexpr uint16_t exifSrgb = 1;

void logLibraryMessage(int, const char *message)
{
    logLine(u"exiv2               : %@", QString::fromUtf8(message).trimmed());
}

void prepareLibrary()
{
    static const bool isPrepared = [] {
        Exiv2::LogMsg::setHandler(logLibraryMessage);
        return Exiv2::XmpParser::initialize();
    }();
    Q_UNUSED(isPrepared)
}

/// XMP is XML, which knows no control characters, no U+FFFE and U+FFFF, and no halves of
/// a character.
std::string metadataText(const QString &text)
{
    std::u32string clean = text.toStdU32String();
    for (char32_t &character : clean) {
        if (QChar::category(character) == QChar::Other_Control || QChar::isSurrogate(character) ||
            character == 0xfffe || character == 0xffff)
            character = U' ';
    }
    return QString::fromStdU32String(clean).toStdString();
}

void writeExif(Exiv2::ExifData &exif, const PictureMetadata &metadata)
{
    if (!metadata.title.isEmpty())
        exif["Exif.Image.ImageDescription"] = metadataText(metadata.title);
    if (!metadata.source.isEmpty())
        exif["Exif.Image.DocumentName"] = metadataText(metadata.source);
    exif["Exif.Image.Software"] = metadataText(softwareName());
    exif["Exif.Photo.ColorSpace"] = exifSrgb;
}

void writeXmp(Exiv2::XmpData &xmp, const PictureMetadata &metadata)
{
    if (!metadata.title.isEmpty())
        xmp["Xmp.dc.title"] = "lang=x-default " + metadataText(metadata.title);
    if (!metadata.source.isEmpty())
        xmp["Xmp.dc.source"] = metadataText(metadata.source);
    xmp["Xmp.xmp.CreatorTool"] = metadataText(softwareName());
}

QByteArray contentOf(Exiv2::Image &image)
{
    Exiv2::BasicIo &io = image.io();
    const Exiv2::IoCloser closer(io);
    if (io.open() != 0)
        return {};
    const Exiv2::DataBuf content = io.read(long(io.size()));
    return QByteArray(reinterpret_cast<const char *>(content.pData_), content.size_);
}

} // namespace

QString softwareName()
{
    return bundleName + QStringLiteral(" " VIGNAR_VERSION);
}

Result<QByteArray> withMetadata(const QByteArray &picture, const PictureMetadata &metadata)
{
    prepareLibrary();
    try {
        const auto image = Exiv2::ImageFactory::open(
            reinterpret_cast<const Exiv2::byte *>(picture.constData()), long(picture.size()));
        // What the picture holds already, its colour profile above all, is written again.
        image->readMetadata();
        writeExif(image->exifData(), metadata);
        writeXmp(image->xmpData(), metadata);
        image->writeMetadata();
        const QByteArray content = contentOf(*image);
        if (content.isEmpty())
            return Failure{u"no content"_s};
        return content;
    } catch (const std::exception &failure) {
        return Failure{QString::fromUtf8(failure.what())};
    }
}

} // namespace vignar
