#include "cli/argumentBytes.h"

#include <algorithm>

namespace vignar
{

namespace
{

constexpr char16_t firstHalf = 0xDC80;
constexpr char16_t lastHalf = 0xDCFF;

bool isValid(const QByteArray &bytes)
{
    return QString::fromUtf8(bytes).toUtf8() == bytes;
}

/// The length of the character at the beginning; 0: it is none.
qsizetype lengthOfCharacter(const QByteArray &bytes)
{
    for (qsizetype length = 1; length <= std::min<qsizetype>(4, bytes.size()); ++length) {
        if (isValid(bytes.left(length)))
            return length;
    }
    return 0;
}

bool isByte(const QString &text, qsizetype at)
{
    const char16_t unit = text[at].unicode();
    return unit >= firstHalf && unit <= lastHalf && !(at > 0 && text[at - 1].isHighSurrogate());
}

} // namespace

QString argumentText(const QByteArray &bytes)
{
    if (isValid(bytes))
        return QString::fromUtf8(bytes);
    QString text;
    for (qsizetype at = 0; at < bytes.size();) {
        const qsizetype length = lengthOfCharacter(bytes.mid(at, 4));
        if (length > 0)
            text += QString::fromUtf8(bytes.mid(at, length));
        else
            text += QChar(0xDC00 + uchar(bytes[at]));
        at += std::max<qsizetype>(1, length);
    }
    return text;
}

QByteArray argumentBytes(const QString &text)
{
    QByteArray bytes;
    qsizetype begin = 0;
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (!isByte(text, at))
            continue;
        bytes += text.mid(begin, at - begin).toUtf8();
        bytes += char(text[at].unicode() & 0xFF);
        begin = at + 1;
    }
    return bytes + text.mid(begin).toUtf8();
}

bool isPlainText(const QString &text)
{
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (isByte(text, at))
            return false;
    }
    return true;
}

} // namespace vignar
