#pragma once

#include <QProcessEnvironment>
#include <QString>

namespace vignar
{

/// The folder "tools" in the application's resources.
QString toolsFolder();

/// Path of ffmpeg: the tools folder, the resource folder, the user's support folder,
/// in this order; "" when none holds one.
QString ffmpegPath();

/// The environment of every tool: the few variables of the application's own that a tool
/// needs, the C locale in UTF-8, no colours, and LC_CTYPE, FONTCONFIG_FILE and
/// FONTCONFIG_PATH. The fontconfig entries are left out where their target does not exist,
/// because a tool would then find no font at all.
QProcessEnvironment toolEnvironment();

} // namespace vignar
