#include "shell/platform/problemReport.h"

#include <QRegularExpression>
#include <QStringList>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

// Mail programs take the letter as one argument, three bytes for some of its characters;
// Linux allows an argument 128 KiB, some mail programs far less.
constexpr int logLines = 60;
constexpr int logCharacters = 6000;

QByteArray encoded(QString text)
{
    return QUrl::toPercentEncoding(text.replace(u'\n', u"\r\n"_s));
}

} // namespace

QString withoutHome(const QString &text, const QString &home)
{
    if (home.size() < 2)
        return text;
    // "/home/al" is no part of "/home/alice".
    const QRegularExpression whole(QRegularExpression::escape(home) + u"(?![\\w.-])"_s,
                                   QRegularExpression::UseUnicodePropertiesOption);
    return QString(text).replace(whole, u"~"_s);
}

QString endOfLines(const QString &log, int lineLimit, int characterLimit)
{
    QStringList lines = log.split(u'\n', Qt::SkipEmptyParts);
    qsizetype first = lines.size();
    qsizetype characters = 0;
    while (first > 0 && lines.size() - first < lineLimit) {
        characters += lines[first - 1].size() + 1;
        if (characters > characterLimit)
            break;
        --first;
    }
    return lines.mid(first).join(u'\n');
}

QString problemReport(const QString &opening, const QString &versions, const QString &log,
                      const QString &home)
{
    const QString end = endOfLines(log, logLines, logCharacters);
    return withoutHome(opening + u"\n\n"_s + versions + u"\n\n"_s + end, home);
}

QUrl mailUrl(const QString &recipient, const QString &subject, const QString &body)
{
    return QUrl::fromEncoded("mailto:" + QUrl::toPercentEncoding(recipient, "@") +
                             "?subject=" + encoded(subject) + "&body=" + encoded(body));
}

} // namespace vignar
