#include "sheet/pictureFormats.h"

#include "settings/applicationPlaces.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>

#include <algorithm>
#include <iterator>

namespace vignar
{

namespace
{

struct Extension {
    QLatin1String text;
    const PictureFormat &format;
};

constexpr Extension extensions[] = {
    {QLatin1String("jpg"), jpegFormat},     {QLatin1String("jpeg"), jpegFormat},
    {QLatin1String("tif"), tiffFormat},     {QLatin1String("tiff"), tiffFormat},
    {QLatin1String("bmp"), bmpFormat},      {QLatin1String("gif"), gifFormat},
    {QLatin1String("png"), pngFormat},      {QLatin1String("jp2"), jpeg2000Format},
    {QLatin1String("jpx"), jpeg2000Format},
};

/// What a JPEG 2000 file begins with, and what its bare code stream does.
constexpr QByteArrayView jp2Starts[] = {{"\0\0\0\x0cjP  ", 8}, {"\xff\x4f\xff\x51", 4}};

QString lowerExtension(const QString &path)
{
    return QFileInfo(path).suffix().toLower();
}

void addOwnPlugin()
{
    QCoreApplication::addLibraryPath(imagePluginFolder());
}

} // namespace

const PictureFormat &formatOfExtension(const QString &path)
{
    const QString extension = lowerExtension(path);
    const auto *found =
        std::find_if(std::begin(extensions), std::end(extensions),
                     [&](const Extension &known) { return extension == known.text; });
    return found == std::end(extensions) ? jpegFormat : found->format;
}

bool isPdfExtension(const QString &path)
{
    return lowerExtension(path) == QLatin1String("pdf");
}

QString imagePluginFolder()
{
    return QDir::cleanPath(applicationPlaces().resourceFolder() +
                           QLatin1String("/../../lib/vignar"));
}

bool canWriteCodec(const QByteArray &codec)
{
    if (QImageWriter::supportedImageFormats().contains(codec))
        return true;
    addOwnPlugin();
    return QImageWriter::supportedImageFormats().contains(codec);
}

void prepareReading(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QByteArray start = file.read(8);
    const bool isJpeg2000 =
        std::any_of(std::begin(jp2Starts), std::end(jp2Starts),
                    [&](QByteArrayView known) { return start.startsWith(known); });
    if (isJpeg2000 && !QImageReader::supportedImageFormats().contains("jp2"))
        addOwnPlugin();
}

} // namespace vignar
