#pragma once

#include <QStringList>

class QWidget;

namespace vignar
{

/// The lines of a log that concern one source: from each line that names it up to the
/// next that names one of the others. Names count only as whole paths.
QStringList linesOfSource(const QString &log, const QString &source, const QStringList &others);

/// Shows those lines of the detailed log in a window of their own.
void showSourceLog(const QString &source, const QStringList &others, QWidget *parent);

} // namespace vignar
