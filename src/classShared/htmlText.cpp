#include "classShared/htmlText.h"

#include "classShared/lineLog.h"
#include "classShared/paths.h"

#include <QStringList>
#include <QTextCursor>
#include <QTextDocument>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

/// Parsed without a document that could fetch what the markup names, and without the
/// pictures that a painter would fetch later.
QTextDocumentFragment parsedHtml(const QString &html)
{
    QTextDocument document;
    QTextCursor(&document).insertFragment(QTextDocumentFragment::fromHtml(html));
    const QString picture(QChar::ObjectReplacementCharacter);
    for (QTextCursor found = document.find(picture); !found.isNull();
         found = document.find(picture, found))
        found.removeSelectedText();
    return QTextDocumentFragment(&document);
}

} // namespace

QTextDocumentFragment html2AttributedText(const QString &text)
{
    if (!text.contains(u'&'))
        return QTextDocumentFragment::fromPlainText(text);
    const QString html = findAndReplace(text, u"&amp;"_s, u"&"_s, false);
    if (!html.contains(u'\n'))
        return parsedHtml(html);

    QStringList lines;
    for (const QString &line : html.split(u'\n'))
        lines += parsedHtml(line).toPlainText();
    return QTextDocumentFragment::fromPlainText(lines.join(u'\n'));
}

QString html2Text(const QString &text)
{
    if (text.isNull())
        return u" "_s;
    return text.contains(u'&') ? html2AttributedText(text).toPlainText() : text;
}

} // namespace vignar
