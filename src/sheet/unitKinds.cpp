// Pictures made of NAL units: H.264 and HEVC.
#include "sheet/bitReader.h"
#include "sheet/pictureIndex.h"
#include "sheet/pictureKinds.h"

#include <optional>

namespace vignar
{

namespace
{

/// A unit's length, its header and the numbers in question are shorter, however often a byte is
/// put in between.
constexpr qint64 peekedBytes = 32;
/// No picture is cut into more slices than it has rows of blocks; the rest are messages.
constexpr int mostUnits = 512;

/// What a unit says of its picture; nothing when it is no slice.
using Saying = std::optional<PictureKind>;

/// ITU-T H.264, 7.3.1 to 7.3.3.
Saying avcSaying(QByteArrayView unit)
{
    constexpr int slice = 1;
    constexpr int syncSlice = 5;
    constexpr quint32 sliceTypes = 5;
    constexpr quint32 intraSlice = 2;
    const int type = uchar(unit.front()) & 0x1f;
    // Between them are slices in parts.
    if (type < slice || type > syncSlice)
        return std::nullopt;
    const QByteArray payload = unescaped(unit.sliced(1));
    BitReader bits(payload);
    bits.golomb();
    // The upper half says so of the whole picture.
    const quint32 sliceType = bits.golomb();
    if (bits.isOver() || sliceType >= 2 * sliceTypes || (type != slice && type != syncSlice))
        return PictureKind::unclear;
    return sliceType % sliceTypes == intraSlice ? PictureKind::intra : PictureKind::other;
}

/// ITU-T H.265, 7.3.1.2 and 7.3.6.1.
Saying hevcSaying(QByteArrayView unit, int extraSliceBits)
{
    constexpr int lastSlice = 9;
    constexpr int firstSyncSlice = 16;
    constexpr int lastSyncSlice = 21;
    constexpr int parameterSet = 34;
    constexpr quint32 intraSlice = 2;
    const int type = uchar(unit.front()) >> 1 & 0x3f;
    // All slices of these are intra.
    if (type >= firstSyncSlice && type <= lastSyncSlice)
        return PictureKind::intra;
    if (type == parameterSet && hevcExtraSliceBits(unit) != extraSliceBits)
        return PictureKind::unclear;
    if (type > lastSlice)
        return std::nullopt;
    const QByteArray payload = unescaped(unit.sliced(std::min<qsizetype>(2, unit.size())));
    BitReader bits(payload);
    const bool isFirst = bits.flag();
    bits.golomb();
    bits.bits(extraSliceBits);
    const quint32 sliceType = bits.golomb();
    // Where the type of a further slice stands depends on more than is known here.
    if (!isFirst || bits.isOver() || sliceType > intraSlice)
        return PictureKind::unclear;
    return sliceType == intraSlice ? PictureKind::intra : PictureKind::other;
}

class UnitKinds final : public PictureKinds
{
public:
    explicit UnitKinds(const StreamCoding &coding) : m_coding(coding) {}

    /// The units of a picture up to the first slice that is not intra.
    PictureKind kindOf(PictureIndex &index, const CodedPicture &picture) override
    {
        const int lengthSize = m_coding.lengthSize;
        PictureKind kind = PictureKind::unclear;
        qint64 offset = 0;
        for (int units = 0; offset < picture.size; ++units) {
            const qint64 left = picture.size - offset;
            const QByteArray bytes =
                index.bytesAt(picture.position + offset, std::min(left, peekedBytes));
            if (bytes.size() <= lengthSize || units == mostUnits)
                return PictureKind::unclear;
            qint64 length = 0;
            for (const char byte : bytes.first(lengthSize))
                length = length << 8 | uchar(byte);
            if (length < 1 || length > left - lengthSize)
                return PictureKind::unclear;
            const QByteArrayView unit = QByteArrayView(bytes).sliced(lengthSize);
            if (const auto said = saying(unit.first(std::min<qint64>(unit.size(), length)))) {
                if (*said != PictureKind::intra)
                    return kind == PictureKind::intra ? PictureKind::unclear : *said;
                kind = PictureKind::intra;
            }
            offset += lengthSize + length;
        }
        return kind;
    }

private:
    Saying saying(QByteArrayView unit) const
    {
        return m_coding.coding == PictureCoding::avc ? avcSaying(unit)
                                                     : hevcSaying(unit, m_coding.extraSliceBits);
    }

    StreamCoding m_coding;
};

} // namespace

std::unique_ptr<PictureKinds> unitKinds(const StreamCoding &coding)
{
    return std::make_unique<UnitKinds>(coding);
}

} // namespace vignar
