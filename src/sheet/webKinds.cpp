// Pictures of VP8, VP9 and AV1.
#include "sheet/bitReader.h"
#include "sheet/pictureIndex.h"
#include "sheet/pictureKinds.h"

#include <vector>

namespace vignar
{

namespace
{

/// The headers in question are shorter.
constexpr qint64 peekedBytes = 16;

/// RFC 6386, 9.1: only key frames are intra.
class Vp8Kinds final : public PictureKinds
{
public:
    PictureKind kindOf(PictureIndex &index, const CodedPicture &picture) override
    {
        const QByteArray bytes = index.bytesAt(picture.position, 1);
        if (bytes.isEmpty())
            return PictureKind::unclear;
        const bool isInter = (bytes[0] & 0x01) != 0;
        const bool isShown = (bytes[0] & 0x10) != 0;
        return !isInter && isShown ? PictureKind::intra : PictureKind::other;
    }
};

/// VP9 Bitstream & Decoding Process Specification, 6.2 and annex B.
class Vp9Kinds final : public PictureKinds
{
public:
    bool remembers() const override { return true; }

    PictureKind kindOf(PictureIndex &index, const CodedPicture &picture) override
    {
        PictureKind kind = PictureKind::other;
        qint64 offset = 0;
        for (const qint64 size : frameSizes(index, picture)) {
            const QByteArray bytes =
                index.bytesAt(picture.position + offset, std::min(size, peekedBytes));
            const PictureKind frame = kindOfFrame(bytes);
            if (frame == PictureKind::unclear)
                return frame;
            if (frame == PictureKind::intra)
                kind = frame;
            offset += size;
        }
        return offset > 0 ? kind : PictureKind::unclear;
    }

private:
    /// The frames of a superframe, or the one frame; none when the index is broken.
    static std::vector<qint64> frameSizes(PictureIndex &index, const CodedPicture &picture)
    {
        constexpr qint64 longestIndex = 2 + 8 * 4;
        const qint64 peeked = std::min(picture.size, longestIndex);
        const QByteArray tail = index.bytesAt(picture.position + picture.size - peeked, peeked);
        if (tail.size() < peeked || peeked < 1)
            return {};
        const auto marker = uchar(tail.back());
        const int frames = (marker & 7) + 1;
        const int width = (marker >> 3 & 3) + 1;
        const qsizetype start = tail.size() - 2 - frames * width;
        if ((marker & 0xe0) != 0xc0 || start < 0 || uchar(tail[start]) != marker)
            return {picture.size};
        std::vector<qint64> sizes;
        qint64 left = picture.size - 2 - frames * width;
        for (int frame = 0; frame < frames; ++frame) {
            qint64 size = 0;
            for (int byte = width - 1; byte >= 0; --byte)
                size = size << 8 | uchar(tail[start + 1 + frame * width + byte]);
            left -= size;
            if (size > 0)
                sizes.push_back(size);
        }
        return left < 0 ? std::vector<qint64>() : sizes;
    }

    PictureKind kindOfFrame(QByteArrayView bytes)
    {
        BitReader bits(bytes);
        const quint32 marker = bits.bits(2);
        // A reserved bit follows profile 3.
        const bool isHighest = bits.bits(2) == 3;
        if (marker != 2 || (isHighest && bits.flag()))
            return PictureKind::unclear;
        if (bits.flag())
            return m_intraSlots >> bits.bits(3) & 1 ? PictureKind::unclear : PictureKind::other;
        const bool isKey = !bits.flag();
        const bool isShown = bits.flag();
        const bool resists = bits.flag();
        const bool isIntraOnly = !isKey && !isShown && bits.flag();
        if (isKey || isIntraOnly) {
            m_intraSlots = 0xff;
            return isShown ? PictureKind::intra : PictureKind::other;
        }
        if (!resists)
            bits.bits(2);
        m_intraSlots &= ~bits.bits(8);
        return bits.isOver() ? PictureKind::unclear : PictureKind::other;
    }

    /// Which of the eight kept frames may be intra: they can be shown later.
    quint32 m_intraSlots = 0xff;
};

/// AV1 Bitstream & Decoding Process Specification, 5.3 and 5.9.2. A key frame that has been
/// shown is never shown again (7.20, showable_frame).
class Av1Kinds final : public PictureKinds
{
public:
    bool remembers() const override { return true; }

    PictureKind kindOf(PictureIndex &index, const CodedPicture &picture) override
    {
        constexpr int mostUnits = 256;
        PictureKind kind = PictureKind::other;
        qint64 offset = 0;
        for (int units = 0; offset < picture.size; ++units) {
            const qint64 left = picture.size - offset;
            const QByteArray bytes =
                index.bytesAt(picture.position + offset, std::min(left, peekedBytes));
            const Unit unit = unitOf(bytes, left);
            if (unit.size == 0 || units == mostUnits)
                return PictureKind::unclear;
            const PictureKind said = kindOfUnit(unit, bytes);
            if (said != PictureKind::other)
                kind = said;
            if (kind == PictureKind::unclear)
                break;
            offset += unit.size;
        }
        return kind;
    }

private:
    struct Unit {
        int type = 0;
        qsizetype header = 0;
        /// With its header; 0 for one that is broken or belongs to a layer.
        qint64 size = 0;
    };

    static Unit unitOf(QByteArrayView bytes, qint64 left)
    {
        BitReader bits(bytes);
        bits.flag();
        const auto type = int(bits.bits(4));
        const bool isOfLayer = bits.flag();
        const bool hasSize = bits.flag();
        bits.flag();
        qint64 size = hasSize ? 0 : left - 1;
        qsizetype header = 1;
        for (bool goesOn = hasSize; goesOn && header <= 5; ++header) {
            goesOn = bits.flag();
            size |= qint64(bits.bits(7)) << (7 * (header - 1));
        }
        if (isOfLayer || bits.isOver() || size > left - header)
            return {};
        return {type, header, header + size};
    }

    PictureKind kindOfUnit(const Unit &unit, QByteArrayView bytes)
    {
        constexpr int frameHeader = 3;
        constexpr int frame = 6;
        constexpr quint32 keyFrame = 0;
        constexpr quint32 intraOnlyFrame = 2;
        if (unit.type != frameHeader && unit.type != frame)
            return PictureKind::other;
        BitReader bits(bytes.sliced(unit.header));
        if (bits.flag())
            return m_isIntraHidden ? PictureKind::unclear : PictureKind::other;
        const quint32 type = bits.bits(2);
        const bool isShown = bits.flag();
        if (bits.isOver() || (isShown && type == intraOnlyFrame))
            return PictureKind::unclear;
        if (isShown && type == keyFrame) {
            m_isIntraHidden = false;
            return PictureKind::intra;
        }
        m_isIntraHidden = m_isIntraHidden || type == keyFrame || type == intraOnlyFrame;
        return PictureKind::other;
    }

    /// An intra frame was coded that may be shown later.
    bool m_isIntraHidden = false;
};

} // namespace

std::unique_ptr<PictureKinds> webKinds(const StreamCoding &coding)
{
    if (coding.coding == PictureCoding::vp8)
        return std::make_unique<Vp8Kinds>();
    if (coding.coding == PictureCoding::vp9)
        return std::make_unique<Vp9Kinds>();
    return std::make_unique<Av1Kinds>();
}

} // namespace vignar
