#include "tasks/shellWords.h"

#include <QList>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

struct Letter {
    QChar value;
    bool isQuoted;

    bool is(char16_t plain) const { return !isQuoted && value == plain; }
};

/// Where a "$" is followed by anything else, it stands for itself.
bool isExpansion(QChar next)
{
    return next.unicode() < 128 && (next.isLetterOrNumber() || u"_{(@*#?$!-"_s.contains(next));
}

/// A "[" that a "]" closes within the same component of a path; the first letter inside
/// belongs to the set even when it is a "]".
bool isBracketPattern(const QList<Letter> &word, qsizetype open)
{
    qsizetype at = open + 1;
    if (at < word.size() && (word[at].is(u'!') || word[at].is(u'^')))
        ++at;
    for (bool isFirst = true; at < word.size() && word[at].value != u'/'; ++at, isFirst = false) {
        if (!isFirst && word[at].is(u']'))
            return true;
    }
    return false;
}

bool isPattern(const QList<Letter> &word)
{
    for (qsizetype at = 0; at < word.size(); ++at) {
        if (word[at].is(u'*') || word[at].is(u'?'))
            return true;
        if (word[at].is(u'[') && isBracketPattern(word, at))
            return true;
    }
    return false;
}

class WordReader
{
public:
    explicit WordReader(QStringView text) : m_text(text) {}

    /// Nothing at the end of the text, or after a refusal.
    std::optional<QString> next();
    bool isRefused() const { return m_isRefused; }

private:
    bool isAtEnd() const { return m_at == m_text.size(); }
    bool isAtBlank() const { return m_text[m_at] == u' ' || m_text[m_at] == u'\t'; }
    QChar following() const { return m_at < m_text.size() ? m_text[m_at] : QChar(); }
    void take(QChar letter, bool isQuoted) { m_word.append({letter, isQuoted}); }
    bool refuse();
    bool readPlain(bool isFirst);
    bool readBackslash();
    bool readSingleQuotes();
    bool readDoubleQuotes();

    QStringView m_text;
    qsizetype m_at = 0;
    QList<Letter> m_word;
    bool m_isRefused = false;
};

bool WordReader::refuse()
{
    m_isRefused = true;
    return false;
}

std::optional<QString> WordReader::next()
{
    while (!isAtEnd() && isAtBlank())
        ++m_at;
    if (isAtEnd())
        return std::nullopt;
    m_word.clear();
    for (bool isFirst = true; !isAtEnd() && !isAtBlank(); isFirst = false) {
        if (!readPlain(isFirst))
            return std::nullopt;
    }
    if (isPattern(m_word)) {
        refuse();
        return std::nullopt;
    }
    QString word;
    for (const Letter &letter : std::as_const(m_word))
        word += letter.value;
    return word;
}

bool WordReader::readPlain(bool isFirst)
{
    const QChar letter = m_text[m_at++];
    if (letter == u'\\')
        return readBackslash();
    if (letter == u'\'')
        return readSingleQuotes();
    if (letter == u'"')
        return readDoubleQuotes();
    if (u"\n;&|<>()`"_s.contains(letter))
        return refuse();
    if (isFirst && (letter == u'~' || letter == u'#'))
        return refuse();
    if (letter == u'$' && isExpansion(following()))
        return refuse();
    take(letter, false);
    return true;
}

bool WordReader::readBackslash()
{
    if (isAtEnd() || following() == u'\n')
        return refuse();
    take(m_text[m_at++], true);
    return true;
}

bool WordReader::readSingleQuotes()
{
    for (; !isAtEnd(); ++m_at) {
        if (m_text[m_at] == u'\'') {
            ++m_at;
            return true;
        }
        take(m_text[m_at], true);
    }
    return refuse();
}

bool WordReader::readDoubleQuotes()
{
    while (!isAtEnd()) {
        QChar letter = m_text[m_at++];
        if (letter == u'"')
            return true;
        if (letter == u'`' || (letter == u'$' && isExpansion(following())))
            return refuse();
        // Between double quotes a backslash guards these alone and else stays.
        if (letter == u'\\' && u"$`\"\\\n"_s.contains(following()) && !isAtEnd()) {
            letter = m_text[m_at++];
            if (letter == u'\n')
                continue;
        }
        take(letter, true);
    }
    return refuse();
}

} // namespace

std::optional<QStringList> shellWords(QStringView text)
{
    // Neither reaches a program as it stands: a zero ends its argument, and half a
    // surrogate pair has no UTF-8 form.
    if (text.contains(QChar::Null) || !text.isValidUtf16())
        return std::nullopt;
    QStringList words;
    WordReader reader(text);
    while (const auto word = reader.next())
        words << *word;
    if (reader.isRefused())
        return std::nullopt;
    return words;
}

} // namespace vignar
