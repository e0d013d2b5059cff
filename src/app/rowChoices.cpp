#include "app/rowChoices.h"

#include "settings/preferences.h"

namespace vignar
{

namespace
{

constexpr int automaticWidth = 1280;

} // namespace

RowChoices choicesOf(const BatchEntry &row)
{
    const int layout = read(row, Keys::out).value_or(mixLayout);
    // The row alone says whether it is to be a PDF; no width of the preferences does.
    if (read(row, Keys::dpi).value_or(1) == 0)
        return {.layout = layout, .width = 0, .format = SheetFormat::pdf};
    return {.layout = layout,
            .width = prefValue(Prefs::prefComputerWidthAuto) ? automaticWidth
                                                             : prefValue(Prefs::prefComputerWidth),
            .format = pictureFormatOf(prefValue(Prefs::prefSheetFormat))};
}

Key<int> limitKey(int layout)
{
    switch (layout) {
    case bigLayout:
        return Prefs::prefLimitBig;
    case medLayout:
        return Prefs::prefLimitMed;
    case minLayout:
        return Prefs::prefLimitMin;
    default:
        return Prefs::prefLimitMix;
    }
}

} // namespace vignar
