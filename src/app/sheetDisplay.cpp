#include "app/sheetDisplay.h"

#include "settings/preferences.h"
#include "settings/stringTables.h"

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// The info line or map of the display dictionary, and the check box that shows it.
struct SheetItem {
    QLatin1String display;
    Key<int> preference;
};
constexpr SheetItem sheetItems[] = {
    {Keys::name.text, Prefs::pageName},           {Keys::location.text, Prefs::pageLocation},
    {Keys::date.text, Prefs::pageDate},           {Keys::duration.text, Prefs::pageDuration},
    {Keys::vIdentity.text, Prefs::pageVIdentity}, {Keys::poids.text, Prefs::pagePoids},
    {Keys::essence.text, Prefs::pageEssence},     {Keys::comment.text, Prefs::pageComment},
    {Keys::timecode.text, Prefs::prefTimecode},
};

} // namespace

Dico sheetDisplay(const Dico &planned, int layout)
{
    Dico display = planned;
    write(display, Keys::bigMedMinMix, layout);
    write(display, Keys::borderColor, prefValue(Prefs::prefBorderColor));
    write(display, Keys::borderSize, prefValue(Prefs::prefBorderSize));
    write(display, Keys::bkgColor, prefValue(Prefs::pageBkgColor));
    if (prefValue(Prefs::bannerDisplayNo))
        write(display, Keys::bannerDisplayNo, 1);
    if (const QString typed = prefValue(Prefs::pageCommentText).simplified(); !typed.isEmpty())
        write(display, Keys::comment, typed);
    for (const SheetItem &item : sheetItems) {
        if (!prefValue(item.preference))
            display.remove(item.display);
    }
    return display;
}

Result<void> checkedPlan(const SheetPlan &plan, const RowChoices &choices)
{
    if (plan.thumbnails.count < 1)
        return Failure{localised(u"V_reason_noRow"_s)};
    Dico display = sheetDisplay(plan.display, choices.layout);
    if (choices.width > 0)
        write(display, Keys::pageWidth, choices.width);
    return sheetFits(display, plan.thumbnails.count, choices.format);
}

bool isDiskPictureWanted()
{
    return prefValue(Prefs::prefMultimediaHd) &&
           !(prefValue(Prefs::prefDerush) && prefValue(Prefs::prefDerushNoMultimediaHd));
}

SheetNaming sheetNaming(const SourceDico &source)
{
    const QString defaultSuffix = read(prefDefaults(), Prefs::prefSuffix).value_or(QString());
    const QString suffix =
        sheetSuffix(prefValue(Prefs::prefSuffix), isDiskPictureWanted(), defaultSuffix);
    return {suffix, nameFromTemplate(prefValue(Prefs::prefNameTemplate), source, suffix),
            prefValue(Prefs::prefWebVtt) != 0, read(source, Keys::sheetNumber).value_or(1)};
}

} // namespace vignar
