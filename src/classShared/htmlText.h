#pragma once

#include <QString>
#include <QTextDocumentFragment>

namespace vignar
{

/// A styled text with its HTML entities decoded; a text without "&" stays plain.
QTextDocumentFragment html2AttributedText(const QString &text);

/// The plain characters of the same; " " for a null text. Line breaks survive.
QString html2Text(const QString &text);

} // namespace vignar
