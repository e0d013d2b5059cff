#include "sheet/ebml.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace vignar
{

std::optional<CodedNumber> codedNumber(QByteArrayView bytes)
{
    if (bytes.isEmpty() || bytes.front() == 0)
        return std::nullopt;
    CodedNumber number;
    number.length = std::countl_zero(quint8(bytes.front())) + 1;
    if (bytes.size() < number.length)
        return std::nullopt;
    for (int byte = 0; byte < number.length; ++byte)
        number.value = number.value << 8 | quint8(bytes[byte]);
    const quint64 marker = quint64(1) << 7 * number.length;
    number.value -= marker;
    number.isUnknown = number.value == marker - 1;
    return number;
}

std::optional<ElementHead> elementHead(QByteArrayView bytes)
{
    const auto id = codedNumber(bytes);
    if (!id || id->length > 4)
        return std::nullopt;
    const auto size = codedNumber(bytes.sliced(id->length));
    if (!size)
        return std::nullopt;
    // The bits that tell the length of an identifier are part of it.
    return ElementHead{quint32(id->value | quint64(1) << 7 * id->length), id->length + size->length,
                       *size};
}

std::optional<ElementView> takeElement(QByteArrayView &bytes)
{
    const auto head = elementHead(bytes);
    if (!head || head->size.isUnknown || head->size.value > quint64(bytes.size() - head->length))
        return std::nullopt;
    const auto size = qsizetype(head->size.value);
    const ElementView element{head->id, bytes.sliced(head->length, size)};
    bytes = bytes.sliced(head->length + size);
    return element;
}

quint64 numberIn(QByteArrayView content)
{
    if (content.size() > qsizetype(sizeof(quint64)))
        return std::numeric_limits<quint64>::max();
    quint64 number = 0;
    for (const char byte : content)
        number = number << 8 | quint8(byte);
    return number;
}

bool isText(QByteArrayView content, QByteArrayView text)
{
    return content.startsWith(text) &&
           std::ranges::all_of(content.sliced(text.size()), [](char byte) { return byte == 0; });
}

} // namespace vignar
