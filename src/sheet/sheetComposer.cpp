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

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

constexpr double pdfScale = 1.5;
constexpr double pdfDpi = 250;
constexpr double jpegDpi = 72;
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

bool writeJpeg(const QString &path, const SheetDrawing &sheet, const SheetPictures &pictures,
               const PictureMetadata &metadata)
{
    QImage page(sheet.geometry.page, QImage::Format_RGB32);
    if (page.isNull())
        return false;
    page.setColorSpace(QColorSpace::SRgb);
    setDpi(page, jpegDpi);
    {
        QPainter painter(&page);
        sheet.draw(painter, pictures);
    }
    const double factor = luminance(sheet.palette.page) < darkPage ? defaultFactor : bestFactor;
    const Result<void> written =
        writePicture(page, path, jpegFormat, jpegQuality(factor), metadata);
    if (!written)
        logLine(u"sheet               :-( %@", written.reason());
    return bool(written);
}

} // namespace

QString sheetPath(const QString &dstPath, SheetFormat format)
{
    return dstPath + (format == SheetFormat::pdf ? u".pdf"_s : u".jpg"_s);
}

Result<void> composeSheet(const Dico &display, SheetFormat format)
{
    const QString dstPath = readStr(display, Keys::dstPathStr);
    const QString path = sheetPath(dstPath, format);
    if (dstPath.isEmpty())
        return Failure{filled(localised(u"V_reason_writeSheet"_s), path)};

    const SheetPictures pictures(read(display, Keys::th).value_or(QStringList()));
    const auto sheet =
        sheetDrawing(display, pictures.count(), pageScale(display, format),
                     format == SheetFormat::pdf ? largestPdfSide : jpegFormat.largestSide);
    if (!sheet)
        return Failure{filled(localised(u"V_reason_sheetSize"_s), path)};

    logColours(sheetColours(display), sheet->palette);
    const PictureMetadata metadata = metadataOf(display, sheet->content);
    const bool isWritten =
        format == SheetFormat::pdf
            ? writePdfPage(path, {sheet->geometry.page, pdfDpi, singleLine(metadata.title)},
                           [&](QPainter &painter) { sheet->draw(painter, pictures); })
            : writeJpeg(path, *sheet, pictures, metadata);
    logLine(u"sheet               :-%@ '%@'", isWritten ? u")"_s : u"("_s, path);
    if (!isWritten)
        return Failure{filled(localised(u"V_reason_writeSheet"_s), path)};
    return {};
}

} // namespace vignar
