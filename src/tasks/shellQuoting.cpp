#include "tasks/shellQuoting.h"

#include "classShared/files.h"
#include "classShared/lineLog.h"
#include "classShared/paths.h"
#include "tasks/shellWords.h"

#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

/// Both ends are this quote; a lone quote is both at once.
bool isEnclosed(const QString &text, char16_t quote)
{
    return text.startsWith(QChar(quote)) && text.endsWith(QChar(quote));
}

bool isEnclosed(const QString &text)
{
    return isEnclosed(text, u'\'') || isEnclosed(text, u'"');
}

QString withoutEnds(const QString &text)
{
    return text.size() < 2 ? u""_s : text.sliced(1, text.size() - 2);
}

/// A first word that "/bin/echo" of the GNU tools takes for itself instead of showing it.
bool isEchoOption(const QStringList &words)
{
    const QString first = words.value(0);
    if (words.size() == 1 && (first == "--help"_L1 || first == "--version"_L1))
        return true;
    return first.size() > 1 && first.startsWith(u'-') &&
           std::all_of(first.cbegin() + 1, first.cend(),
                       [](QChar letter) { return u"neE"_s.contains(letter); });
}

QString singleQuoted(const QString &text)
{
    return u'\'' + QString(text).replace(u'\'', "'\\''"_L1) + u'\'';
}

QString quoted(const QString &item)
{
    const QString text = isEnclosed(item) ? withoutEnds(item) : item;
    if (text.contains(u'"')) {
        QString doubleQuoted = u'"' + text + u'"';
        logVerbose(u"currArgStr :-( %@ (…double quotes: %@)", item, doubleQuoted);
        return doubleQuoted;
    }
    logVerbose(u"currArgStr :-( %@ (…post simple quotes: %@)", item, singleQuoted(text));
    return singleQuoted(text);
}

QString linked(const QString &item, qsizetype index, const QString &linkFolder)
{
    mkdir(linkFolder);
    const QString link = linkFolder + filled(u"/arg%ld", index);
    ln_sCocoa(QFileInfo(item).absoluteFilePath(), link);
    logVerbose(u"currArgStr :-( %@ (…testPresenceCocoa: %@)", item, link);
    // The folder's name comes from the environment, so it may need quotes itself.
    return isStringSafe4Task(link) ? link : singleQuoted(link);
}

QString shellItem(const QString &item, qsizetype index, const QString &linkFolder)
{
    static const QStringList operators{u"2>&1"_s, u">"_s, u"<"_s, u"|"_s};
    if (operators.contains(item) || isStringSafe4Task(item)) {
        logVerbose(u"currArgStr :-) %@", item);
        return item;
    }
    return pathExists(item) ? linked(item, index, linkFolder) : quoted(item);
}

} // namespace

bool isStringSafe4Task(const QString &argument)
{
    if (argument.isNull())
        return false;
    static const QStringList operators{u"|"_s, u"&"_s, u">"_s, u"<"_s};
    if (operators.contains(argument))
        return true;
    const auto words = shellWords(argument);
    if (!words || isEchoOption(*words))
        return false;
    // Dropping the ends of what is shown, and not those of the argument, makes every
    // argument in quotes unsafe: it is quoted anew.
    const QString shown = words->join(u' ');
    const QString echo = isEnclosed(argument) ? withoutEnds(shown) : shown;
    if (echo == argument || echo == QString(argument).remove(u'\\'))
        return true;
    logVerbose(u"isStringSafe4TaskWit:-( '%@' > '%@'", argument, echo);
    return false;
}

QString shellCommand(const QStringList &items, const QString &linkFolder)
{
    QStringList parts;
    for (qsizetype index = 0; index < items.size(); ++index)
        parts << shellItem(items[index], index, linkFolder);
    return parts.join(u' ');
}

} // namespace vignar
