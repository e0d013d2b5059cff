#pragma once

#include <QStringList>

#include <optional>

namespace vignar
{

/// The words that the POSIX shell would pass on for this piece of a command line, split
/// at unquoted blanks, with quotes and backslashes removed.
///
/// Nothing where the shell would do more than that: operators, expansions, commands,
/// comments, unfinished quotes, line ends. Nothing either for a pattern and a leading
/// "~": the shell leaves them alone when no file or user of that name is there, but the
/// answer must not hang on that.
std::optional<QStringList> shellWords(QStringView text);

} // namespace vignar
