#pragma once

#include <QString>

#include <functional>

class QObject;

namespace vignar
{

/// Receives whether something was shown: once, from the event loop or before the call
/// returns, and never after the end of the context.
using ShownHandler = std::function<void(bool isShown)>;

/// Opens a file with the desktop's program for it. False when it is missing or the desktop
/// cannot.
bool openFile(const QString &path);

/// Shows a folder in the file manager that answers on the session bus, or else in the
/// desktop's program for folders; never in this one, which takes folders as well.
void openFolder(const QString &folder, QObject *context, const ShownHandler &done = {});

/// Shows a file, selected, in the same way; its folder where the file is missing or cannot be
/// selected.
void showInFileManager(const QString &path, QObject *context, const ShownHandler &done = {});

} // namespace vignar
