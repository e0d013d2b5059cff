#include "shell/preferences/preferenceRows.h"

#include "classShared/sourceDico.h"
#include "settings/stringTables.h"

#include <algorithm>
#include <iterator>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

using Pane = PreferencePane;
using Kind = ControlKind;
using Action = PreferencePanel::Action;

constexpr PreferenceRow::Condition isOn(const Key<int> &key)
{
    return {key.text.data(), 1};
}

constexpr PreferenceRow::Condition isOff(const Key<int> &key)
{
    return {key.text.data(), 0};
}

constexpr PreferenceRow::Option pictureFormats[] = {{"", "JPEG"}, {"png", "PNG"}, {"webp", "WebP"}};

constexpr PreferenceRow rows[] = {
    {.key = Prefs::prefDefautDstPathStr.text,
     .pane = Pane::general,
     .kind = Kind::folder,
     .action = Action::prepareDestination},
    {.key = Prefs::prefAlertEnd.text,
     .pane = Pane::general,
     .kind = Kind::checkBox,
     .beginsGroup = true},

    {.key = Prefs::prefCheckMatrix.text, .pane = Pane::sheet, .kind = Kind::layoutChoice},
    {.key = Prefs::prefColor.text,
     .pane = Pane::sheet,
     .kind = Kind::presetChoice,
     .action = Action::setColor},
    {.key = Prefs::pageBkgColor.text, .pane = Pane::sheet, .kind = Kind::colour},
    {.key = Prefs::prefBorderColor.text, .pane = Pane::sheet, .kind = Kind::colour},
    {.key = Prefs::prefBorderSize.text, .pane = Pane::sheet, .kind = Kind::decimal, .step = 0.5},
    {.key = Prefs::pageName.text,
     .pane = Pane::sheet,
     .kind = Kind::checkBox,
     .beginsGroup = true,
     .isPaired = true},
    {.key = Prefs::pageLocation.text,
     .pane = Pane::sheet,
     .kind = Kind::checkBox,
     .isPaired = true},
    {.key = Prefs::pageDate.text, .pane = Pane::sheet, .kind = Kind::checkBox, .isPaired = true},
    {.key = Prefs::pageDuration.text,
     .pane = Pane::sheet,
     .kind = Kind::checkBox,
     .isPaired = true},
    {.key = Prefs::pageVIdentity.text,
     .pane = Pane::sheet,
     .kind = Kind::checkBox,
     .isPaired = true},
    {.key = Prefs::pagePoids.text, .pane = Pane::sheet, .kind = Kind::checkBox, .isPaired = true},
    {.key = Prefs::pageEssence.text, .pane = Pane::sheet, .kind = Kind::checkBox, .isPaired = true},
    {.key = Prefs::pageComment.text, .pane = Pane::sheet, .kind = Kind::checkBox, .isPaired = true},
    {.key = Prefs::pageCommentText.text,
     .pane = Pane::sheet,
     .kind = Kind::text,
     .enabledWhen = {isOn(Prefs::pageComment)}},

    {.key = Prefs::prefLimitAuto.text,
     .pane = Pane::thumbnails,
     .kind = Kind::checkBox,
     .beginsGroup = true,
     .action = Action::thLimitAuto},
    {.key = Prefs::prefLimitBig.text,
     .pane = Pane::thumbnails,
     .kind = Kind::limit,
     .enabledWhen = {isOff(Prefs::prefLimitAuto)}},
    {.key = Prefs::prefLimitMed.text,
     .pane = Pane::thumbnails,
     .kind = Kind::limit,
     .enabledWhen = {isOff(Prefs::prefLimitAuto)}},
    {.key = Prefs::prefLimitMin.text,
     .pane = Pane::thumbnails,
     .kind = Kind::limit,
     .enabledWhen = {isOff(Prefs::prefLimitAuto)}},
    {.key = Prefs::prefLimitMix.text,
     .pane = Pane::thumbnails,
     .kind = Kind::limit,
     .enabledWhen = {isOff(Prefs::prefLimitAuto)}},
    {.key = Prefs::prefDerush.text,
     .pane = Pane::thumbnails,
     .kind = Kind::checkBox,
     .beginsGroup = true,
     .action = Action::thLimitAuto},
    {.key = Prefs::prefDerushInterval.text,
     .pane = Pane::thumbnails,
     .kind = Kind::integer,
     .enabledWhen = {isOn(Prefs::prefDerush)}},
    {.key = Prefs::prefAvoidBlank.text,
     .pane = Pane::thumbnails,
     .kind = Kind::checkBox,
     .beginsGroup = true},
    {.key = Prefs::prefTimecode.text,
     .pane = Pane::thumbnails,
     .kind = Kind::checkBox,
     .beginsGroup = true},
    {.key = Prefs::prefTrueTimecode.text,
     .pane = Pane::thumbnails,
     .kind = Kind::checkBox,
     .enabledWhen = {isOn(Prefs::prefTimecode)}},

    {.key = Prefs::prefDpi.text,
     .pane = Pane::output,
     .kind = Kind::formatChoice,
     .action = Action::prefDpi},
    {.key = Prefs::prefSheetFormat.text,
     .pane = Pane::output,
     .kind = Kind::choice,
     .options = pictureFormats,
     .enabledWhen = {isOn(Prefs::prefDpi)}},
    {.key = Prefs::prefComputerWidthAuto.text,
     .pane = Pane::output,
     .kind = Kind::checkBox,
     .beginsGroup = true,
     .enabledWhen = {isOn(Prefs::prefDpi)},
     .action = Action::prefComputerWidthAuto},
    {.key = Prefs::prefComputerWidth.text,
     .pane = Pane::output,
     .kind = Kind::slider,
     .step = 16,
     .enabledWhen = {isOn(Prefs::prefDpi), isOff(Prefs::prefComputerWidthAuto)},
     .action = Action::prefComputerWidth},
    {.key = Prefs::prefSuffix.text, .pane = Pane::output, .kind = Kind::text, .beginsGroup = true},
    {.key = Prefs::prefNameTemplate.text, .pane = Pane::output, .kind = Kind::text},
    {.key = Prefs::prefMultimediaHd.text,
     .pane = Pane::output,
     .kind = Kind::checkBox,
     .beginsGroup = true,
     .action = Action::multimediaHDBt},
    {.key = Prefs::prefDerushNoMultimediaHd.text,
     .pane = Pane::output,
     .kind = Kind::checkBox,
     .enabledWhen = {isOn(Prefs::prefMultimediaHd), isOn(Prefs::prefDerush)}},
    {.key = Prefs::prefWebVtt.text,
     .pane = Pane::output,
     .kind = Kind::checkBox,
     .beginsGroup = true},
};

QString textOf(QLatin1String key, const char *what)
{
    return QLatin1String("V_") + key + QLatin1String(what);
}

/// Null where the tables have no such text.
QString optionalText(const QString &textKey)
{
    return isLocalised(textKey) ? localised(textKey) : QString();
}

} // namespace

QString PreferenceRow::label() const
{
    return localised(textOf(key, ""));
}

QString PreferenceRow::toolTip() const
{
    return optionalText(textOf(key, "_tip"));
}

QString PreferenceRow::groupLabel() const
{
    return optionalText(textOf(key, "_group"));
}

QString PreferenceRow::unit() const
{
    return optionalText(textOf(key, "_unit"));
}

QString PreferenceRow::placeholder() const
{
    return optionalText(textOf(key, "_placeholder"));
}

std::span<const PreferenceRow> preferenceRows()
{
    return rows;
}

const PreferenceRow &preferenceRow(const QString &key)
{
    const auto found = std::ranges::find(rows, key, &PreferenceRow::key);
    Q_ASSERT(found != std::end(rows));
    return *found;
}

int layoutOfLimit(const QString &key)
{
    constexpr std::pair<Key<int>, int> layouts[] = {{Prefs::prefLimitBig, bigLayout},
                                                    {Prefs::prefLimitMed, medLayout},
                                                    {Prefs::prefLimitMin, minLayout}};
    const auto found =
        std::find_if(std::begin(layouts), std::end(layouts),
                     [&key](const auto &layout) { return key == layout.first.text; });
    return found == std::end(layouts) ? int(mixLayout) : found->second;
}

} // namespace vignar
