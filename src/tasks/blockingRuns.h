#pragma once

#include <QString>
#include <QStringList>

namespace vignar
{

/// Runs a pipeline and waits: standard output and error of its last stage as text, as
/// decodedReport() reads it and within reportLimit. Null for an empty list or stage, a
/// missing tool, and output that is "", " ", "\n" or " \n". A run past the limit is
/// killed and gives null. Needs no event loop, and may be called on any thread.
QString taskArray(const QStringList &arguments);

/// Longest time that the blocking runs wait for a tool, in milliseconds.
inline constexpr int blockingRunLimitMs = 10 * 60 * 1000;

/// The runs below hand text to the shell. Never give them text that comes from outside
/// the program: a file name, a preference, what a tool has printed.
///
/// Starts "/bin/sh -c" with the command and returns at once; its output is not taken.
/// Main thread only.
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
    /// when the thread cannot be had. The first piece is the command, the others are
    /// its "$0", "$1", ….
    static QString verbose(const QStringList &pieces);
};

} // namespace vignar
