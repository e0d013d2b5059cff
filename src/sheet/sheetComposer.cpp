#include "sheet/sheetComposer.h"

#include "classShared/lineLog.h"
#include "settings/stringTables.h"
#include "sheet/imageExport.h"
#include "sheet/pdfPage.h"
#include "sheet/picturePlacement.h"
#include "sheet/sheetDrawing.h"
#include "sheet/sheetPictures.h"
#include "sheet/textStyle.h"

#include <QColorSpace>
#include <QFileInfo>

#include <cmath>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

constexpr double pdfScale = 1.5;
constexpr double pdfDpi = 250;
constexpr double pictureDpi = 72;
/// Lossy WebP that shows no trace of it around the letters; 100 would be lossless.
constexpr int webpQuality = 92;
/// Below this page luminance a JPEG gets the default quality: a dark page hides more.
constexpr double darkPage = 0.1;
constexpr double bestFactor = 1.0;
constexpr double defaultFactor = -1.0;

double pageScale(const Dico &display, SheetFormat format)
{
    if (format == SheetFormat::pdf)
        return pdfScale;
    const int width = read(display, Keys::pageWidth).value_or(basePageWidth);
    return width > 0 ? double(width) / basePageWidth : 1.0;
}

void logColours(const SheetColours &asked, const SheetPalette &palette)
{
    logLine(u"rgba average bkg    : %f", luminance(asked.page));
    logLine(u"rgba average border : %f", luminance(asked.border));
    logLine(u"rgba average txt    : %f", luminance(palette.border));
}

/// The title that the sheet shows; without one, the sheet's own name.
PictureMetadata metadataOf(const Dico &display, const SheetContent &content)
{
    const QString ownName = QFileInfo(readStr(display, Keys::dstPathStr)).fileName();
    return {content.title.isEmpty() ? ownName : content.title,
            QFileInfo(readStr(display, Keys::srcPathStr)).fileName()};
}

const PictureFormat &pictureFormat(SheetFormat format)
{
    if (format == SheetFormat::png)
        return pngFormat;
    return format == SheetFormat::webp ? webpFormat : jpegFormat;
}

int largestSide(SheetFormat format)
{
    if (format == SheetFormat::pdf)
        return largestPdfSide;
    // PNG itself knows no limit, but the page must be held in memory.
    const int side = pictureFormat(format).largestSide;
    return side > 0 ? side : jpegFormat.largestSide;
}

QString tooLarge(const QSizeF &page, SheetFormat format)
{
    if (format == SheetFormat::webp)
        return filled(localised(u"V_reason_webpSize"_s), largestSide(format));
    const auto pixels = [](double side) { return QString::number(std::trunc(side), 'f', 0); };
    return filled(localised(u"V_reason_sheetSize"_s), pixels(page.width()), pixels(page.height()));
}

int quality(SheetFormat format, const SheetPalette &palette)
{
    if (format == SheetFormat::jpeg)
        return jpegQuality(luminance(palette.page) < darkPage ? defaultFactor : bestFactor);
    return format == SheetFormat::webp ? webpQuality : -1;
}

bool writePage(const QString &path, SheetFormat format, const SheetDrawing &sheet,
               const SheetPictures &pictures, const PictureMetadata &metadata,
               const std::function<bool()> &mayWrite, const FileWriter &write)
{
    QImage page(sheet.geometry.page, QImage::Format_RGB32);
    if (page.isNull())
        return false;
    page.setColorSpace(QColorSpace::SRgb);
    setDpi(page, pictureDpi);
    {
        QPainter painter(&page);
        sheet.draw(painter, pictures);
    }
    if (mayWrite && !mayWrite())
        return false;
    const Result<void> written = writePicture(page, path, pictureFormat(format),
                                              quality(format, sheet.palette), metadata, write);
    if (!written)
        logLine(u"sheet               :-( %@", written.reason());
    return bool(written);
}

} // namespace

QString sheetExtension(SheetFormat format)
{
    switch (format) {
    case SheetFormat::pdf:
        return u"pdf"_s;
    case SheetFormat::png:
        return u"png"_s;
    case SheetFormat::webp:
        return u"webp"_s;
    case SheetFormat::jpeg:
        break;
    }
    return u"jpg"_s;
}

SheetFormat pictureFormatOf(const QString &extension)
{
    for (const SheetFormat format : {SheetFormat::png, SheetFormat::webp}) {
        if (extension == sheetExtension(format))
            return format;
    }
    return SheetFormat::jpeg;
}

QString sheetPath(const QString &dstPath, SheetFormat format)
{
    return dstPath + u'.' + sheetExtension(format);
}

Result<void> sheetFits(const Dico &display, int pictureCount, SheetFormat format)
{
    const SheetFit fit = sheetFit(
        geometryInput(display, pictureCount, pageScale(display, format), largestSide(format)));
    switch (fit.verdict) {
    case SheetFit::Verdict::noRoom:
        return Failure{localised(u"V_reason_noRoom"_s)};
    case SheetFit::Verdict::tooLarge:
        return Failure{tooLarge(fit.page, format)};
    case SheetFit::Verdict::fits:
        break;
    }
    return {};
}

Result<void> composeSheet(const Dico &display, SheetFormat format,
                          const std::function<bool()> &mayWrite, const FileWriter &write)
{
    const QString dstPath = readStr(display, Keys::dstPathStr);
    const QString path = sheetPath(dstPath, format);
    if (dstPath.isEmpty())
        return Failure{filled(localised(u"V_reason_writeSheet"_s), path)};

    const SheetPictures pictures(read(display, Keys::th).value_or(QStringList()));
    if (const Result<void> fits = sheetFits(display, pictures.count(), format); !fits)
        return fits;
    const auto sheet =
        sheetDrawing(display, pictures.count(), pageScale(display, format), largestSide(format));

    logColours(sheetColours(display), sheet->palette);
    const PictureMetadata metadata = metadataOf(display, sheet->content);
    const bool isWritten =
        format == SheetFormat::pdf
            ? writePdfPage(
                  path, {sheet->geometry.page, pdfDpi, singleLine(metadata.title), mayWrite},
                  [&](QPainter &painter) { sheet->draw(painter, pictures); }, write)
            : writePage(path, format, *sheet, pictures, metadata, mayWrite, write);
    logLine(u"sheet               :-%@ '%@'", isWritten ? u")"_s : u"("_s, path);
    if (!isWritten)
        return Failure{filled(localised(u"V_reason_writeSheet"_s), path)};
    return {};
}

} // namespace vignar
