#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>

namespace vignar
{

/// Small tools for reading ffmpeg's text. None fails: what is absent gives an empty
/// view, 0 or the text itself.

/// The lines of a report, without the escape sequences that colour them. A carriage return
/// ends one too: ffmpeg rewrites its progress line that way.
QStringList reportLines(const QString &report);

/// The text before, and after, the first occurrence of the mark: the whole text, and
/// nothing, when it does not occur.
QStringView textBefore(QStringView text, QStringView mark);
QStringView textAfter(QStringView text, QStringView mark);

/// The integer that the text begins with, blanks skipped; 0 when none, the nearest
/// limit of int when it does not fit.
int leadingInt(QStringView text);
/// True when the text is nothing but that integer.
bool isPlainInt(QStringView text);

/// The number in the text, as str2Float() reads it, in the double that prints like it
/// (23.98 and not 23.979999542).
double reportNumber(QStringView text);

} // namespace vignar
