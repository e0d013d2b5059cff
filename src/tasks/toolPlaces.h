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

/// The application's environment with LC_CTYPE, FONTCONFIG_FILE and FONTCONFIG_PATH
/// set as every tool gets them. The fontconfig entries are left out where their
/// target does not exist, because a tool would then find no font at all.
QProcessEnvironment toolEnvironment();

} // namespace vignar
