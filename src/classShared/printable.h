#pragma once

#include <QString>

namespace vignar
{

/// The text with each control and format character (terminal sequences, line ends, bidirectional
/// overrides) shown as "?": a file name must not speak to the terminal.
QString printable(const QString &text);

/// The same for a text of several lines: line ends and tabulators stay.
QString printableLines(const QString &text);

/// The text on one line: its line ends shown as the symbols "␊" and "␍", all else as it stands.
QString onOneLine(QString text);

} // namespace vignar
