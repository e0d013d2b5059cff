#pragma once

#include <QStringList>

class QWidget;

namespace vignar
{

/// The open panel for video files; several may be chosen. Empty when declined.
QStringList chooseSources(QWidget &window);

/// The same for one folder of videos, or a recording bundle.
QStringList chooseSourceFolder(QWidget &window);

/// The nearest folder at or above a path, "~" expanded, that exists: a panel that is to open
/// in a missing folder takes its last part for a file name.
QString existingFolder(const QString &path);

/// The name filter of the panel: the declared extensions in the spellings that are
/// admitted.
QString sourceFilter();

} // namespace vignar
