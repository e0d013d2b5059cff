#pragma once

#include <QString>
#include <QStringList>

namespace vignar
{

/// True when the shell would pass the argument on unchanged, as "/bin/echo" would show:
/// "a b" is safe, "a  b" is not. An argument also counts as safe when it comes out as
/// itself without its backslashes. Decided by the shell's word rules alone; nothing is
/// run.
bool isStringSafe4Task(const QString &argument);

/// The items joined to one command line for the shell, each quoted where needed. An
/// unsafe item that is a file is replaced by a link "arg<i>" in linkFolder, which is
/// created when first needed.
///
/// Never give it text that comes from outside the program: inside an item that holds a
/// double quote, the shell still sees "$" and "`".
QString shellCommand(const QStringList &items, const QString &linkFolder);

} // namespace vignar
