#include "sheet/sheetDrawing.h"

#include "classShared/colours.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

constexpr QSize defaultThumbnail{1280, 960};

constexpr Key<QString> infoKeys[] = {Keys::location, Keys::date,    Keys::duration, Keys::vIdentity,
                                     Keys::poids,    Keys::essence, Keys::comment};

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

SheetContent contentOf(const Dico &display)
{
    SheetContent content;
    content.title = readStr(display, Keys::name);
    for (const Key<QString> &key : infoKeys) {
        if (contains(display, key))
            content.infoLines.push_back({localised(key), readStr(display, key)});
    }
    content.timecodes = read(display, Keys::timecode).value_or(Dico());
    if (!contains(display, Keys::bannerDisplayNo))
        content.credit = localised(u"V_madeWith"_s);
    return content;
}

} // namespace

SheetColours sheetColours(const Dico &display)
{
    return {sheetColour(display, Keys::bkgColor, Prefs::pageBkgColor, QColor(Qt::white)),
            sheetColour(display, Keys::borderColor, Prefs::prefBorderColor, QColor(128, 128, 128))};
}

void SheetDrawing::draw(QPainter &painter, const SheetPictures &pictures) const
{
    SheetPainter(content, geometry, palette, pictures).draw(painter);
}

std::optional<SheetDrawing> sheetDrawing(const Dico &display, int pictureCount, double scale,
                                         int largestSide)
{
    SheetDrawing drawing{contentOf(display), {}, {}};
    const auto geometry = sheetGeometry(geometryInput(display, pictureCount, scale, largestSide));
    if (!geometry)
        return std::nullopt;
    const SheetColours colours = sheetColours(display);
    drawing.geometry = *geometry;
    drawing.palette = sheetPalette(colours.page, colours.border);
    return drawing;
}

GeometryInput geometryInput(const Dico &display, int pictureCount, double scale, int largestSide)
{
    GeometryInput input;
    input.layout = read(display, Keys::bigMedMinMix).value_or(mixLayout);
    input.pictureCount = pictureCount;
    input.thumbnailSize = thumbnailSize(display);
    input.borderSize = read(display, Keys::borderSize).value_or(0);
    input.scale = scale;
    input.infoLineCount = static_cast<int>(std::ranges::count_if(
        infoKeys, [&display](const Key<QString> &key) { return contains(display, key); }));
    input.largestSide = largestSide;
    input.largestArea = largestPageArea;
    return input;
}

} // namespace vignar
