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
    RowChoices choices{.layout = read(row, Keys::out).value_or(mixLayout),
                       .width = read(row, Keys::dpi).value_or(1)};
    if (choices.width > 0)
        choices.width = prefValue(Prefs::prefComputerWidthAuto)
                            ? automaticWidth
                            : prefValue(Prefs::prefComputerWidth);
    choices.format =
        choices.width == 0 ? SheetFormat::pdf : pictureFormatOf(prefValue(Prefs::prefSheetFormat));
    return choices;
}

} // namespace vignar
