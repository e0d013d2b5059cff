#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>

namespace vignar
{

/// The main table, and the one of the field orders.
inline constexpr QLatin1String localizedTable{"Localized"};
inline constexpr QLatin1String fieldsTable{"fields"};

/// Two-letter code of the language in use: the first of the user's languages that
/// has a folder in the resources or a table of the user's own, else "en".
QString interfaceLanguage();
/// Chooses a language by its two-letter code; a null code returns to the user's.
void setInterfaceLanguage(const QString &code);

/// Key to text of a strings file's content. Lines of another form are skipped; the
/// escapes \" \\ \n \t and comments are understood.
QHash<QString, QString> parseStrings(const QString &content);

/// A strings file's text; its encoding is detected from its content. Null when it
/// cannot be read.
QString readStringsFile(const QString &path);

/// The text of a key in the language in use, the user's own table first, else in English,
/// else "". These lookups are thread-safe.
QString tableText(const QString &key, const QString &table);

/// The text of a key, or the key itself when the table has none.
QString localised(const QString &key, const QString &table = localizedTable);

/// The same with its first letter in upper case.
QString localisedCapitalised(const QString &key);

/// True when the main table has a text for the key that differs from the key.
bool isLocalised(const QString &key);

/// The key whose value is the text, or the text itself.
QString str2LocalisationTitle(const QString &localisedText, const QString &tableFile);

/// The key whose value in any of the languages is the text, the language in use first; the text
/// itself when it is none, and when it is a key.
QString keyOfText(const QString &text, const QString &table);

/// The keys of a table of the resources, in file order; nothing when it has none.
std::optional<QStringList> localisationKeys(const QString &tableName);

/// Path of the language's "Localized.strings", the user's own where there is one; null when
/// "D_Langue" has no three letters or the file does not exist.
QString currentLocalizationFile();

/// Path of the user's own table of the language, in the support folder; a copy of the shipped
/// one is made where there is none. Null when that fails.
QString ownLocalizationFile();

} // namespace vignar
