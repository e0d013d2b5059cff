#pragma once

#include <QStringList>

class QWidget;

namespace vignar
{

/// The open panel for video files; several may be chosen. Empty when declined.
QStringList chooseSources(QWidget &window);

/// The same for one folder of videos, or a recording bundle.
QStringList chooseSourceFolder(QWidget &window);

/// The name filter of the panel: the declared extensions in the spellings that are
/// admitted.
QString sourceFilter();

} // namespace vignar
