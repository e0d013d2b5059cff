#include "sheet/avcSlices.h"

#include "sheet/pictureIndex.h"

#include <optional>

namespace vignar
{

namespace
{

constexpr int sliceUnit = 1;
constexpr int firstPartitionUnit = 2;
constexpr int lastPartitionUnit = 4;
constexpr int syncSliceUnit = 5;
/// Slice types 2 and 7; the second says so of the whole picture.
constexpr quint32 intraSlice = 2;
constexpr quint32 sliceTypes = 5;

/// A unit's length, its type and the two numbers in question are shorter, however often a byte
/// is put in between.
constexpr qint64 peekedBytes = 32;
/// No picture is cut into more slices than it has rows of blocks; the rest are messages.
constexpr int mostUnits = 512;

/// The bits of a unit behind its type, without the bytes that keep start codes away.
class UnitBits
{
public:
    explicit UnitBits(QByteArrayView unit)
    {
        int zeros = 0;
        for (const char byte : unit.sliced(1)) {
            const bool isInBetween = zeros >= 2 && byte == 3;
            zeros = byte == 0 ? zeros + 1 : 0;
            if (!isInBetween)
                m_bytes.append(byte);
        }
    }

    /// An Exp-Golomb number, ue(v).
    std::optional<quint32> number()
    {
        int zeros = 0;
        while (bit() == 0) {
            if (++zeros > 31)
                return std::nullopt;
        }
        quint32 value = 1;
        for (; zeros > 0; --zeros)
            value = value << 1 | quint32(bit() == 1);
        return m_isOver ? std::nullopt : std::optional(value - 1);
    }

private:
    /// Behind the end it is ones, which end any number.
    int bit()
    {
        const qsizetype byte = m_place / 8;
        m_isOver = m_isOver || byte >= m_bytes.size();
        const int value = m_isOver ? 1 : uchar(m_bytes[byte]) >> (7 - m_place % 8) & 1;
        ++m_place;
        return value;
    }

    QByteArray m_bytes;
    qsizetype m_place = 0;
    bool m_isOver = false;
};

SliceKind kindOf(QByteArrayView unit)
{
    UnitBits bits(unit);
    const auto firstBlock = bits.number();
    const auto type = bits.number();
    if (!firstBlock || !type || *type >= 2 * sliceTypes)
        return SliceKind::unclear;
    return *type % sliceTypes == intraSlice ? SliceKind::intra : SliceKind::other;
}

/// What a unit says of its picture; nothing when it is no slice.
std::optional<SliceKind> kindOfUnit(QByteArrayView unit)
{
    const int type = uchar(unit.front()) & 0x1f;
    if (type >= firstPartitionUnit && type <= lastPartitionUnit)
        return SliceKind::unclear;
    if (type == sliceUnit || type == syncSliceUnit)
        return kindOf(unit);
    return std::nullopt;
}

} // namespace

SliceKind sliceKind(PictureIndex &index, const CodedPicture &picture)
{
    SliceKind kind = SliceKind::unclear;
    qint64 offset = 0;
    for (int units = 0; offset < picture.size; ++units) {
        const qint64 left = picture.size - offset;
        const QByteArray bytes =
            index.bytesAt(picture.position + offset, std::min(left, peekedBytes));
        const int lengthSize = index.lengthSize();
        if (bytes.size() <= lengthSize || units == mostUnits)
            return SliceKind::unclear;
        qint64 length = 0;
        for (const char byte : bytes.first(lengthSize))
            length = length << 8 | uchar(byte);
        if (length < 1 || length > left - lengthSize)
            return SliceKind::unclear;
        const QByteArrayView unit = QByteArrayView(bytes).sliced(lengthSize);
        if (const auto said = kindOfUnit(unit.first(std::min(qint64(unit.size()), length)))) {
            if (*said != SliceKind::intra)
                return kind == SliceKind::intra ? SliceKind::unclear : *said;
            kind = SliceKind::intra;
        }
        offset += lengthSize + length;
    }
    return kind;
}

} // namespace vignar
