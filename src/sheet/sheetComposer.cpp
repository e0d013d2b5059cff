#include "sheet/sheetComposer.h"

#include "classShared/lineLog.h"
#include "settings/stringTables.h"
#include "sheet/imageExport.h"
#include "sheet/pdfPage.h"
#include "sheet/sheetDrawing.h"
#include "sheet/sheetPictures.h"

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

bool writeJpeg(const QString &path, const SheetDrawing &sheet, const SheetPictures &pictures)
{
    QImage page(sheet.geometry.page, QImage::Format_RGB32);
    if (page.isNull())
        return false;
    const int dotsPerMeter = qRound(jpegDpi / 0.0254);
    page.setDotsPerMeterX(dotsPerMeter);
    page.setDotsPerMeterY(dotsPerMeter);
    {
        QPainter painter(&page);
        sheet.draw(painter, pictures);
    }
    return imgExport(page, path,
                     luminance(sheet.palette.page) < darkPage ? defaultFactor : bestFactor);
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
    const auto sheet = sheetDrawing(display, pictures.count(), pageScale(display, format),
                                    format == SheetFormat::pdf ? largestPdfSide : largestJpegSide);
    if (!sheet)
        return Failure{filled(localised(u"V_reason_sheetSize"_s), path)};

    logColours(sheetColours(display), sheet->palette);
    const bool isWritten =
        format == SheetFormat::pdf
            ? writePdfPage(path, {sheet->geometry.page, pdfDpi, sheet->content.title},
                           [&](QPainter &painter) { sheet->draw(painter, pictures); })
            : writeJpeg(path, *sheet, pictures);
    logLine(u"sheet               :-%@ '%@'", isWritten ? u")"_s : u"("_s, path);
    if (!isWritten)
        return Failure{filled(localised(u"V_reason_writeSheet"_s), path)};
    return {};
}

} // namespace vignar
