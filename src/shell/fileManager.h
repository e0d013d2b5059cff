#pragma once

#include <QString>

namespace vignar
{

/// Opens a file or folder with the desktop's program for it. False when it is missing or
/// the desktop cannot.
bool openInDesktop(const QString &path);

/// Shows a file, selected, in the desktop's file manager; opens its folder where the file
/// manager cannot select. False when neither exists.
bool showInFileManager(const QString &path);

} // namespace vignar
