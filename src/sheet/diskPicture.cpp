#include "sheet/diskPicture.h"

#include "classShared/lineLog.h"
#include "sheet/extractionFolder.h"
#include "sheet/imageExport.h"
#include "sheet/picturePlacement.h"
#include "sheet/richPictures.h"

#include <QFileInfo>
#include <QPainter>

#include <utility>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

constexpr QSize canvasSize{360, 480};
constexpr QSize bandSize{360, 240};
/// Leaves three gray rows between the bands; as many of the second are cut off.
constexpr int secondBandTop = 243;
constexpr double canvasDpi = 72;
/// Stands for the quality that pictures get by default.
constexpr double defaultFactor = -1;

/// The canvas with the pictures that load; null when there is none, or one whose size
/// cannot be told.
QImage canvasOf(const QStringList &pictures, const PicturePair &pair)
{
    QImage canvas(canvasSize, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(QColor(128, 128, 128));
    QPainter painter(&canvas);
    bool isAnyDrawn = false;
    int top = 0;
    for (const int index : {pair.first, pair.second}) {
        const QString path = pictures.value(index);
        const int bandTop = std::exchange(top, secondBandTop);
        if (!QFileInfo::exists(path))
            continue;
        if (!imgSizes(path))
            return {};
        const QImage picture = loadedPicture(path);
        if (picture.isNull())
            continue;
        painter.drawImage(0, bandTop,
                          rescaled(picture, bandSize, canvasDpi, Placement::cover, false));
        isAnyDrawn = true;
    }
    return isAnyDrawn ? canvas : QImage();
}

bool makeDiskPicture(const QString &pictureFolder, const QString &destination,
                     const FileWriter &write)
{
    const QStringList pictures = extractedPictures(pictureFolder);
    const PicturePair pair = diskPictures(loggedWeights(pictures));
    if (pair.first < 0)
        return false;
    logLine(u"multimediaDiskThumb - th#%ld & th#%ld", pair.first, pair.second);
    const QImage canvas = canvasOf(pictures, pair);
    if (canvas.isNull())
        return false;
    const QImage picture = rescaled(canvas, canvasSize, canvasDpi, Placement::stretch, false);
    const Result<void> written = writePicture(picture, destination, jpegFormat,
                                              jpegQuality(defaultFactor), signedMetadata, write);
    const bool isSuccess = bool(written);
    if (!isSuccess)
        logLine(u"imgExport           :-( '%@' %@", destination, written.reason());
    logLine(u"imgRescaleForced ? %@", destination);
    logLine(u"isSuccess           :-%@ img %@", isSuccess ? u")"_s : u"("_s, destination);
    return isSuccess;
}

} // namespace

bool multimediaDiskThumb(const QString &pictureFolder, const QString &destination,
                         const FileWriter &write)
{
    logLine(u"multimediaDiskThumb - begin… (from %@ -> to %@)", pictureFolder, destination);
    const bool isSuccess = makeDiskPicture(pictureFolder, destination, write);
    logLine(u"multimediaDiskThumb - isSuccess ? %d", isSuccess);
    return isSuccess;
}

} // namespace vignar
