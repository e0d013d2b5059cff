#pragma once

#include <QString>
#include <QStringList>

namespace vignar
{

/// True when the shell would pass the argument on unchanged. Decided by the shell's
/// word rules alone; nothing is run.
bool isStringSafe4Task(const QString &argument);

/// The items joined to one command line for the shell, each quoted where needed. An
/// unsafe item that is a file is replaced by a link "arg<i>" in linkFolder, which is
/// created when first needed.
QString shellCommand(const QStringList &items, const QString &linkFolder);

} // namespace vignar
