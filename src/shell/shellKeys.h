#pragma once

#include "classShared/keys.h"

#include <QStringList>

namespace vignar
{

/// What the desktop program remembers beside the preferences.
namespace ShellKeys
{

/// Name of a window to a dictionary from screen names to its place there.
inline constexpr Key<Dico> windowPlaces{"windowPlaces"};
/// Of the list beside the controls, in pixels.
inline constexpr Key<int> drawerWidth{"drawerWidth"};
/// Newest first.
inline constexpr Key<QStringList> recentDestinations{"recentDestinations"};

} // namespace ShellKeys

} // namespace vignar
