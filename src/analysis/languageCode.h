#pragma once

#include "classShared/keys.h"

#include <QString>

namespace vignar
{

/// Name to code of every language of ISO 639-2, as texts: English names, three-letter
/// codes in lower case. Where a language has two codes, the name gives the terminologic
/// one ("French": "fra") and the name with a blank at its end the bibliographic one
/// ("French ": "fre"). "Bihari" has the code "--": none.
Dico languageTable();

/// Looks up the code of a name (toCode), or the name of a code in any case. A null text
/// gives languageTable(), any other a text, or an invalid variant: a name that is not in
/// the table. "-" gives the code "und".
///
/// A code that is not in the table gives the name "-" within "qaa" … "qtz" (reserved for
/// local use), "?" for "mul", "und" and "zxx" (several, undetermined, none), else "!".
/// languageTestWord gives English both ways.
QVariant languageCode(bool toCode, const QString &text);

inline constexpr QLatin1String languageTestWord{"totoCestLePlusBeau"};

} // namespace vignar
