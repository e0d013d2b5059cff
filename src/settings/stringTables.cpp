#include "settings/stringTables.h"

#include "classShared/lineLog.h"
#include "settings/applicationPlaces.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QMutex>
#include <QRegularExpression>
#include <QStringDecoder>

#include <uchardet.h>

namespace vignar
{
using namespace Qt::StringLiterals;

namespace
{

using Table = QHash<QString, QString>;

constexpr QLatin1String fallbackLanguage{"en"};
constexpr qint64 stringsFileLimit = 16 * 1024 * 1024;

QString languageFolder(const QString &code)
{
    return applicationPlaces().resourceFolder() + u'/' + code + u".lproj"_s;
}

/// Where the user keeps texts of his own, which go before those of the resources. The field
/// orders are not among them: they are compared with one another.
QString ownTablePath(const QString &code)
{
    return applicationPlaces().supportFolder() + u'/' + code + u".lproj/"_s + localizedTable +
           u".strings"_s;
}

bool isLanguageKnown(const QString &code)
{
    return QFileInfo(languageFolder(code)).isDir() || QFileInfo(ownTablePath(code)).isFile();
}

/// The tables read so far, of one resource folder. Texts are looked up from worker
/// threads too.
struct Tables {
    QMutex mutex;
    QString chosenLanguage;
    QString resourceFolder;
    QString language;
    /// By path.
    QHash<QString, Table> parsed;
};

Tables &tables()
{
    static Tables instance;
    return instance;
}

QString firstUserLanguage()
{
    // A name begins with the code: "fr", "fr-CA", "fr-Latn-FR".
    for (const QString &name : QLocale::system().uiLanguages()) {
        const QString code = name.section(u'-', 0, 0).toLower();
        if (code.size() == 2 && isLanguageKnown(code))
            return code;
    }
    return fallbackLanguage;
}

/// The language in use, what was read before forgotten where it is of other resources.
/// The mutex is held.
QString currentLanguage(Tables &all)
{
    const QString folder = applicationPlaces().resourceFolder();
    if (all.language.isEmpty() || all.resourceFolder != folder) {
        all.resourceFolder = folder;
        all.parsed.clear();
        all.language = all.chosenLanguage.isEmpty() ? firstUserLanguage() : all.chosenLanguage;
    }
    return all.language;
}

QString shippedTablePath(const QString &code, const QString &table)
{
    return languageFolder(code) + u'/' + table + u".strings"_s;
}

const Table &tableIn(Tables &all, const QString &path)
{
    auto parsed = all.parsed.constFind(path);
    if (parsed == all.parsed.cend())
        parsed = all.parsed.insert(path, parseStrings(readStringsFile(path)));
    return *parsed;
}

QString textIn(Tables &all, const QString &path, const QString &key)
{
    return tableIn(all, path).value(key);
}

/// The languages that have a folder in the resources.
QStringList languages()
{
    QStringList folders = QDir(applicationPlaces().resourceFolder())
                              .entryList({u"*.lproj"_s}, QDir::Dirs, QDir::Name);
    return folders.replaceInStrings(u".lproj"_s, QString());
}

/// The decoder that a detected name stands for; the detector's word for pure ASCII, an
/// empty one, and unknown names give Latin-1, which reads any byte.
QStringDecoder detectedDecoder(const QByteArray &bytes)
{
    uchardet_t detector = uchardet_new();
    uchardet_handle_data(detector, bytes.constData(), static_cast<size_t>(bytes.size()));
    uchardet_data_end(detector);
    QStringDecoder decoder(uchardet_get_charset(detector));
    uchardet_delete(detector);
    return decoder.isValid() ? std::move(decoder) : QStringDecoder(QStringDecoder::Latin1);
}

QString decoded(const QByteArray &bytes)
{
    if (const auto marked = QStringConverter::encodingForData(bytes))
        return QStringDecoder(*marked)(bytes);
    // Text that is valid UTF-8 is hardly ever anything else; a detector only guesses.
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString text = utf8(bytes);
    if (!utf8.hasError())
        return text;
    return detectedDecoder(bytes)(bytes);
}

/// The file of that name in the folder of the language, of the fallback language, or
/// beside the folders; "" when there is none.
QString resourcePath(const QString &fileName)
{
    const QString root = applicationPlaces().resourceFolder();
    for (const QString &folder :
         {languageFolder(interfaceLanguage()), languageFolder(fallbackLanguage), root}) {
        const QString path = folder + u'/' + fileName;
        if (QFileInfo(path).isFile())
            return path;
    }
    return {};
}

QStringList linesOf(const QString &path)
{
    static const QRegularExpression lineEnd(u"\r\n|\r|\n"_s);
    return readStringsFile(path).split(lineEnd);
}

QString unescaped(const QString &quoted)
{
    QString text;
    for (qsizetype i = 0; i < quoted.size(); ++i) {
        const bool isEscape = quoted.at(i) == u'\\' && i + 1 < quoted.size();
        const QChar next = isEscape ? quoted.at(++i) : quoted.at(i);
        if (isEscape && next == u'n')
            text += u'\n';
        else if (isEscape && next == u't')
            text += u'\t';
        else
            text += next;
    }
    return text;
}

} // namespace

QString interfaceLanguage()
{
    Tables &all = tables();
    const QMutexLocker locker(&all.mutex);
    return currentLanguage(all);
}

void setInterfaceLanguage(const QString &code)
{
    Tables &all = tables();
    const QMutexLocker locker(&all.mutex);
    all.chosenLanguage = code;
    all.language.clear();
}

QHash<QString, QString> parseStrings(const QString &content)
{
    // A comment, or an entry that begins its line or follows another item. Comments come
    // first, so that an entry inside one is skipped with it.
    static const QString quoted = uR"re("((?:[^"\\\n\r]|\\[^\n\r])*+)")re"_s;
    static const QRegularExpression item(
        uR"(/\*.*?(?:\*/|\z)|//[^\n\r]*|(?:^|(?<=\*/|;))[ \t]*)"_s + quoted + u"[ \t]*=[ \t]*"_s +
            quoted,
        QRegularExpression::MultilineOption | QRegularExpression::DotMatchesEverythingOption);
    Table table;
    for (auto found = item.globalMatch(content); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        if (match.hasCaptured(2))
            table.insert(unescaped(match.captured(1)), unescaped(match.captured(2)));
    }
    return table;
}

QString readStringsFile(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return {};
    const QString text = decoded(file.read(qMin(file.size(), stringsFileLimit)));
    return text.isNull() ? u""_s : text;
}

QString tableText(const QString &key, const QString &table)
{
    Tables &all = tables();
    const QMutexLocker locker(&all.mutex);
    const QString language = currentLanguage(all);
    QString text;
    if (table == localizedTable)
        text = textIn(all, ownTablePath(language), key);
    if (text.isEmpty())
        text = textIn(all, shippedTablePath(language, table), key);
    return text.isEmpty() ? textIn(all, shippedTablePath(fallbackLanguage, table), key) : text;
}

QString localised(const QString &key, const QString &table)
{
    const QString text = tableText(key, table);
    return text.isEmpty() ? key : text;
}

QString localisedCapitalised(const QString &key)
{
    QString text = localised(key);
    if (!text.isEmpty())
        text[0] = text.at(0).toUpper();
    return text;
}

bool isLocalised(const QString &key)
{
    const QString text = tableText(key, localizedTable);
    return !text.isEmpty() && text != key;
}

QString str2LocalisationTitle(const QString &localisedText, const QString &tableFile)
{
    if (localisedText.isEmpty())
        return {};
    if (tableFile.isEmpty())
        return localisedText;
    logDebug(u"str2LocalisationTitl- begin, from '%@'->'%@'", localisedText, tableFile);
    QString path = tableFile;
    if (QFileInfo(path).suffix().isEmpty())
        path += u".strings"_s;
    if (!QFileInfo::exists(path))
        path = resourcePath(path);
    for (const QString &line : linesOf(path)) {
        if (!line.contains(u'"') || !line.contains(u'='))
            continue;
        const QString value = line.section(u'=', 1);
        const bool isQuoted = value.count(u'"') >= 2;
        if ((isQuoted ? value.section(u'"', 1, 1) : value) == localisedText)
            return line.section(u'"', 1, 1);
    }
    logDebug(u"str2LocalisationTitl:-( from '%@'", localisedText);
    return localisedText;
}

QString keyOfText(const QString &text, const QString &table)
{
    if (text.isEmpty())
        return text;
    Tables &all = tables();
    const QMutexLocker locker(&all.mutex);
    for (const QString &language : QStringList(currentLanguage(all)) + languages()) {
        const Table &texts = tableIn(all, shippedTablePath(language, table));
        if (texts.contains(text))
            return text;
        if (const QString key = texts.key(text); !key.isNull())
            return key;
    }
    return text;
}

std::optional<QStringList> localisationKeys(const QString &tableName)
{
    QStringList keys;
    for (const QString &line : linesOf(resourcePath(tableName + u".strings"_s))) {
        if (!line.contains(u'='))
            continue;
        const QStringList pieces = line.section(u'=', 0, 0).split(u'"');
        if (pieces.size() == 2)
            keys.append(pieces.at(0));
        else if (pieces.size() == 3)
            keys.append(pieces.at(1));
    }
    if (keys.isEmpty())
        return std::nullopt;
    return keys;
}

QString currentLocalizationFile()
{
    const QString language = localised(u"D_Langue"_s);
    if (!isLocalised(u"D_Langue"_s) || language.size() != 3)
        return {};
    logLine(u"Local language      : %@", language);
    const QString shipped = shippedTablePath(language.left(2), localizedTable);
    for (const QString &path : {ownTablePath(interfaceLanguage()), shipped}) {
        if (QFileInfo(path).isFile())
            return path;
    }
    return {};
}

QString ownLocalizationFile()
{
    const QString current = currentLocalizationFile();
    const QString own = ownTablePath(interfaceLanguage());
    if (current.isNull() || current == own)
        return current;
    // Read-only where the package or the file system makes it so.
    const bool isMade = QDir().mkpath(QFileInfo(own).path()) && QFile::copy(current, own) &&
                        QFile::setPermissions(own, QFile::permissions(own) | QFile::WriteOwner);
    return isMade ? own : QString();
}

} // namespace vignar
