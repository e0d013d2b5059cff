#include "sheet/streamCoding.h"

#include "sheet/bitReader.h"

#include <QtEndian>

namespace vignar
{

namespace
{

constexpr int hevcParameterSet = 34;
constexpr int av1SequenceHeader = 1;

int byteAt(QByteArrayView bytes, qsizetype offset)
{
    return offset < bytes.size() ? uchar(bytes[offset]) : 0;
}

} // namespace

std::optional<int> hevcExtraSliceBits(QByteArrayView unit)
{
    const QByteArray payload = unescaped(unit.sliced(std::min<qsizetype>(2, unit.size())));
    BitReader bits(payload);
    bits.golomb();
    bits.golomb();
    bits.bits(2);
    const auto count = int(bits.bits(3));
    return bits.isOver() ? std::nullopt : std::optional(count);
}

QByteArray unescaped(QByteArrayView payload)
{
    QByteArray bytes;
    int zeros = 0;
    for (const char byte : payload) {
        const bool isInBetween = zeros >= 2 && byte == 3;
        zeros = byte == 0 ? zeros + 1 : 0;
        if (!isInBetween)
            bytes.append(byte);
    }
    return bytes;
}

std::optional<StreamCoding> avcCoding(QByteArrayView configuration)
{
    if (configuration.size() < 5)
        return std::nullopt;
    return StreamCoding{.coding = PictureCoding::avc,
                        .lengthSize = (byteAt(configuration, 4) & 3) + 1};
}

std::optional<StreamCoding> hevcCoding(QByteArrayView configuration)
{
    constexpr qsizetype arraysOffset = 22;
    if (configuration.size() <= arraysOffset)
        return std::nullopt;
    std::optional<int> extraBits;
    qsizetype offset = arraysOffset + 1;
    for (int arrays = byteAt(configuration, arraysOffset); arrays > 0; --arrays) {
        const int type = byteAt(configuration, offset) & 0x3f;
        int units = byteAt(configuration, offset + 1) << 8 | byteAt(configuration, offset + 2);
        offset += 3;
        for (; units > 0; --units) {
            const int size = byteAt(configuration, offset) << 8 | byteAt(configuration, offset + 1);
            offset += 2;
            if (offset + size > configuration.size())
                return std::nullopt;
            const QByteArrayView unit = configuration.sliced(offset, size);
            offset += size;
            if (type != hevcParameterSet)
                continue;
            const auto bits = hevcExtraSliceBits(unit);
            if (!bits || (extraBits && *extraBits != *bits))
                return std::nullopt;
            extraBits = bits;
        }
    }
    if (!extraBits)
        return std::nullopt;
    return StreamCoding{.coding = PictureCoding::hevc,
                        .lengthSize = (byteAt(configuration, 21) & 3) + 1,
                        .extraSliceBits = *extraBits};
}

std::optional<StreamCoding> av1Coding(QByteArrayView configuration)
{
    // Four bytes, then the sequence header as a unit with its size.
    BitReader bits(configuration.sliced(std::min<qsizetype>(4, configuration.size())));
    bits.flag();
    const auto type = int(bits.bits(4));
    const bool isExtended = bits.flag();
    const bool hasSize = bits.flag();
    bits.flag();
    if (type != av1SequenceHeader || isExtended || !hasSize)
        return std::nullopt;
    while (!bits.isOver() && bits.flag())
        bits.bits(7);
    bits.bits(7);
    bits.bits(3);
    const bool isStill = bits.flag();
    const bool isReduced = bits.flag();
    if (isStill || isReduced || bits.isOver())
        return std::nullopt;
    return StreamCoding{.coding = PictureCoding::av1};
}

} // namespace vignar
