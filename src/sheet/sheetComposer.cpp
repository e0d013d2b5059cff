#include "sheet/sheetComposer.h"

#include "classShared/colours.h"
#include "classShared/lineLog.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "sheet/imageExport.h"
#include "sheet/pdfPage.h"
#include "sheet/sheetGeometry.h"
#include "sheet/sheetPainter.h"
#include "sheet/sheetPalette.h"

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

constexpr double pdfScale = 1.5;
constexpr double pdfDpi = 250;
constexpr double jpegDpi = 72;
constexpr QSize defaultThumbnail{1280, 960};
/// Below this page luminance a JPEG gets the default quality: a dark page hides more.
constexpr double darkPage = 0.1;
constexpr double bestFactor = 1.0;
constexpr double defaultFactor = -1.0;

constexpr Key<QString> infoKeys[] = {Keys::location,  Keys::date,  Keys::duration,
                                     Keys::vIdentity, Keys::poids, Keys::essence};

double pageScale(const Dico &display, SheetFormat format)
{
    if (format == SheetFormat::pdf)
        return pdfScale;
    const int width = read(display, Keys::pageWidth).value_or(basePageWidth);
    return width > 0 ? double(width) / basePageWidth : 1.0;
}

QSize thumbnailSize(const Dico &display)
{
    const QSize size(read(display, Keys::wTh).value_or(0), read(display, Keys::hTh).value_or(0));
    return size.isEmpty() ? defaultThumbnail : size;
}

QColor sheetColour(const Dico &display, const Key<QString> &key, const Key<QString> &preference,
                   const QColor &last)
{
    if (const auto colour = colorHexaRgb(readStr(display, key)))
        return *colour;
    return colorHexaRgb(prefValue(preference)).value_or(last);
}

SheetPalette paletteOf(const Dico &display)
{
    const QColor page =
        sheetColour(display, Keys::bkgColor, Prefs::pageBkgColor, QColor(Qt::white));
    const QColor border =
        sheetColour(display, Keys::borderColor, Prefs::prefBorderColor, QColor(128, 128, 128));
    const SheetPalette palette = sheetPalette(page, border);
    logLine(u"rgba average bkg    : %f", luminance(page));
    logLine(u"rgba average border : %f", luminance(border));
    logLine(u"rgba average txt    : %f", luminance(palette.border));
    return palette;
}

SheetContent contentOf(const Dico &display)
{
    SheetContent content;
    content.title = readStr(display, Keys::name);
    for (const Key<QString> &key : infoKeys) {
        if (contains(display, key))
            content.infoLines.push_back({localised(key), readStr(display, key)});
    }
    content.pictures = read(display, Keys::th).value_or(QStringList());
    content.timecodes = read(display, Keys::timecode).value_or(Dico());
    if (!contains(display, Keys::bannerDisplayNo))
        content.credit = localised(u"V_madeWith"_s);
    return content;
}

std::optional<SheetGeometry> geometryOf(const Dico &display, const SheetContent &content,
                                        SheetFormat format)
{
    GeometryInput input;
    input.layout = read(display, Keys::bigMedMinMix).value_or(mixLayout);
    input.pictureCount = static_cast<int>(content.pictures.size());
    input.thumbnailSize = thumbnailSize(display);
    input.borderSize = read(display, Keys::borderSize).value_or(0);
    input.scale = pageScale(display, format);
    input.infoLineCount = static_cast<int>(content.infoLines.size());
    input.largestSide = format == SheetFormat::pdf ? largestPdfSide : largestJpegSide;
    return sheetGeometry(input);
}

bool writeJpeg(const QString &path, const SheetPainter &sheet, const SheetPalette &palette,
               const QSize &size)
{
    QImage page(size, QImage::Format_RGB32);
    if (page.isNull())
        return false;
    const int dotsPerMeter = qRound(jpegDpi / 0.0254);
    page.setDotsPerMeterX(dotsPerMeter);
    page.setDotsPerMeterY(dotsPerMeter);
    {
        QPainter painter(&page);
        sheet.draw(painter);
    }
    return imgExport(page, path, luminance(palette.page) < darkPage ? defaultFactor : bestFactor);
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

    const SheetContent content = contentOf(display);
    const auto geometry = geometryOf(display, content, format);
    if (!geometry)
        return Failure{filled(localised(u"V_reason_sheetSize"_s), path)};

    const SheetPalette palette = paletteOf(display);
    const SheetPainter sheet(content, *geometry, palette);
    const bool isWritten = format == SheetFormat::pdf
                               ? writePdfPage(path, {geometry->page, pdfDpi, content.title},
                                              [&](QPainter &painter) { sheet.draw(painter); })
                               : writeJpeg(path, sheet, palette, geometry->page);
    logLine(u"sheet               :-%@ '%@'", isWritten ? u")"_s : u"("_s, path);
    if (!isWritten)
        return Failure{filled(localised(u"V_reason_writeSheet"_s), path)};
    return {};
}

} // namespace vignar
