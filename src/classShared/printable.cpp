#include "classShared/printable.h"

#include <QList>

#include <algorithm>

namespace vignar
{

namespace
{

enum class LineEnds { hidden, kept };

bool isUnprintable(char32_t character, LineEnds lineEnds)
{
    if (lineEnds == LineEnds::kept && (character == U'\n' || character == U'\t'))
        return false;
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

QString cleaned(const QString &text, LineEnds lineEnds)
{
    // Nearly every log line is plain ASCII.
    if (std::ranges::all_of(text, [](QChar each) { return each >= u' ' && each < u'\x7f'; }))
        return text;
    QList<uint> characters = text.toUcs4();
    for (uint &character : characters) {
        if (isUnprintable(character, lineEnds))
            character = U'?';
    }
    return QString::fromUcs4(reinterpret_cast<const char32_t *>(characters.constData()),
                             characters.size());
}

} // namespace

QString printable(const QString &text)
{
    return cleaned(text, LineEnds::hidden);
}

QString printableLines(const QString &text)
{
    return cleaned(text, LineEnds::kept);
}

QString onOneLine(QString text)
{
    return text.replace(u'\n', u'␊').replace(u'\r', u'␍');
}

} // namespace vignar
