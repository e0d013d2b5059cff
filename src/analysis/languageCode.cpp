#include "analysis/languageCode.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace vignar
{
namespace
{

struct Language {
    QStringView name;
    QStringView code;
};

constexpr Language languages[] = {
#include "analysis/languageTable.inc"
};

QVariant codeOf(const QString &name)
{
    const auto found = std::ranges::find(languages, QStringView(name), &Language::name);
    if (found != std::end(languages))
        return found->code.toString();
    return name == u"-" ? QVariant(u"und"_s) : QVariant();
}

QString nameOf(const QString &code)
{
    const auto found = std::ranges::find(languages, QStringView(code), &Language::code);
    if (found != std::end(languages))
        return found->name.toString();
    if (code >= u"qaa" && code <= u"qtz")
        return u"-"_s;
    return code == u"mul" || code == u"und" || code == u"zxx" ? u"?"_s : u"!"_s;
}

} // namespace

Dico languageTable()
{
    Dico table;
    for (const Language &language : languages)
        table.insert(language.name.toString(), language.code.toString());
    return table;
}

QVariant languageCode(bool toCode, const QString &text)
{
    if (text.isNull())
        return languageTable();
    if (text == languageTestWord)
        return toCode ? u"eng"_s : u"English"_s;
    return toCode ? codeOf(text) : nameOf(text.toLower());
}

} // namespace vignar
