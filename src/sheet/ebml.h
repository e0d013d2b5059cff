#pragma once

#include <QByteArrayView>

#include <optional>

namespace vignar
{

/// A number of EBML with its length in front (RFC 8794, 4).
struct CodedNumber {
    quint64 value = 0;
    /// Bytes.
    int length = 0;
    /// All bits of the value are set, which stands for a size that is not told.
    bool isUnknown = false;
};

/// The number that some bytes begin with; nothing when it is none or cut.
std::optional<CodedNumber> codedNumber(QByteArrayView bytes);

/// What stands before the content of an element.
struct ElementHead {
    quint32 id = 0;
    /// Bytes of the head.
    int length = 0;
    /// Bytes of the content.
    CodedNumber size;
};

/// Bytes at most.
constexpr int longestElementHead = 12;

/// The head that some bytes begin with; nothing when it is none or cut.
std::optional<ElementHead> elementHead(QByteArrayView bytes);

/// An element that lies in memory.
struct ElementView {
    quint32 id = 0;
    QByteArrayView content;
};

/// Takes the first element of some bytes off them; nothing when it is broken.
std::optional<ElementView> takeElement(QByteArrayView &bytes);

/// Hands over all elements of some bytes; false when they are broken or one is not liked.
template <class Like>
bool allElements(QByteArrayView bytes, const Like &like)
{
    while (!bytes.isEmpty()) {
        const auto element = takeElement(bytes);
        if (!element || !like(*element))
            return false;
    }
    return true;
}

/// The number that the content of an element is: none is 0, one too long is the largest.
quint64 numberIn(QByteArrayView content);

/// True when the content of an element is a text, which may be filled up with zeros.
bool isText(QByteArrayView content, QByteArrayView text);

} // namespace vignar
