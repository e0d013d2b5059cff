#pragma once

#include "classShared/result.h"

#include <QString>

#include <cstdio>

namespace vignar
{

/// Writes lines of results to standard output, flushed and, where that is a terminal, printable;
/// the system's words where that fails.
Result<void> printResult(const QString &lines);

/// Puts something in the place of standard streams that are closed, so that no file that is
/// opened later takes their numbers and what is meant for them. Writing still fails.
void replaceClosedStreams();

/// One line of progress on standard error: rewritten in place on a terminal, otherwise
/// only lines that stay are written.
class ProgressLine
{
public:
    ProgressLine();

    bool isTerminal() const { return m_isTerminal; }

    /// Shows the text in place of the last one; nothing where there is no terminal.
    void show(const QString &text);
    /// Writes a line that stays.
    void print(const QString &text);
    /// Takes the shown text away.
    void clear();

private:
    bool m_isTerminal;
    QString m_shown;
};

} // namespace vignar
