#include "shell/preferences/colourPresets.h"

#include <algorithm>
#include <iterator>

namespace vignar
{

namespace
{

constexpr ColourPreset presets[] = {
    {QLatin1String("dark"), QLatin1String("1c1c1e"), QLatin1String("c4c4c8")},
    {QLatin1String("light"), QLatin1String("ffffff"), QLatin1String("b3b3b3")},
    {QLatin1String("warm"), QLatin1String("f6eedc"), QLatin1String("6f5237")},
};

} // namespace

std::span<const ColourPreset> colourPresets()
{
    return presets;
}

int ownColours()
{
    return static_cast<int>(std::size(presets));
}

int segmentOfColours(const QString &page, const QString &border)
{
    const auto *found =
        std::find_if(std::begin(presets), std::end(presets), [&](const ColourPreset &preset) {
            return preset.page == page && preset.border == border;
        });
    return static_cast<int>(found - std::begin(presets));
}

} // namespace vignar
