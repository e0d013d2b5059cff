#pragma once

#include <QString>

#include <optional>
#include <span>

namespace vignar
{

/// The colours behind a segment of Prefs::prefColor.
struct ColourPreset {
    /// "V_prefColor_<name>" is its text.
    QLatin1String name;
    /// Six hexadecimal digits each.
    QLatin1String page;
    QLatin1String border;
};

/// By segment. In each the border stands out from the page by itself, but for the second
/// one, which is the factory setting.
std::span<const ColourPreset> colourPresets();

/// The segment after the presets: colours that the user has mixed.
int ownColours();

/// The segment that shows these colours.
int segmentOfColours(const QString &page, const QString &border);

} // namespace vignar
