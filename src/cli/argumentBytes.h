#pragma once

#include <QByteArray>
#include <QString>

namespace vignar
{

/// An argument of the program as text from which its bytes can be had again: each byte that is
/// not part of valid UTF-8 becomes a half character, U+DC00 and its value.
QString argumentText(const QByteArray &bytes);

QByteArray argumentBytes(const QString &text);

/// False where the text holds such half characters.
bool isPlainText(const QString &text);

} // namespace vignar
