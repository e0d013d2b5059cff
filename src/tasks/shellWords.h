#pragma once

#include <QStringList>

#include <optional>

namespace vignar
{

/// The words that the POSIX shell would pass on for this piece of a command line, split
/// at unquoted blanks, with quotes and backslashes removed.
///
/// Nothing where the shell would do, or might do, more than that: operators, expansions,
/// commands, comments, patterns, a leading "~", unfinished quotes, line ends.
std::optional<QStringList> shellWords(QStringView text);

} // namespace vignar
