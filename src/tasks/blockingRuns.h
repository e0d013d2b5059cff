#pragma once

#include <QString>
#include <QStringList>

namespace vignar
{

/// Runs a pipeline and waits: standard output and error of its last stage as text,
/// UTF-8 or else Latin-1. Null for an empty list or stage, a missing tool, and output
/// that is "", " ", "\n" or " \n". A run past the limit is killed and gives null.
QString taskArray(const QStringList &arguments);

/// Longest time that taskArray() waits for a tool, in milliseconds.
inline constexpr int blockingRunLimitMs = 10 * 60 * 1000;

/// Starts "/bin/sh -c" with the command and returns at once; its output is not taken.
/// Never give it text that comes from outside the program.
void taskShell(const QString &command);

/// Runs one shell command line and waits: its standard output without one trailing
/// line end, null when empty. The list form quotes each item. Starts in the folder
/// when it is given and exists.
QString taskWithStr(const QString &command, const QString &folder = {});
QString taskWithStr(const QStringList &items, const QString &folder = {});

/// A blocking run of "/bin/sh -c" on a thread of its own. Not reentrant.
class taskBloquante
{
public:
    /// Output and errors of the pieces as one text, one trailing line end removed; null
    /// when the thread cannot be had.
    static QString verbose(const QStringList &pieces);
};

} // namespace vignar
