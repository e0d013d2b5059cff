#pragma once

#include <QByteArray>

#include <optional>

namespace vignar
{

enum class PictureCoding {
    avc,
    hevc,
    vp8,
    vp9,
    av1,
    /// All pictures are intra, each on its own.
    intraOnly
};

/// What the header of a stream tells that is needed to read the beginnings of its pictures.
struct StreamCoding {
    PictureCoding coding = PictureCoding::intraOnly;
    /// Bytes of the number that stands before each NAL unit (H.264, HEVC).
    int lengthSize = 0;
    /// Bits before the type of a slice (num_extra_slice_header_bits of HEVC).
    int extraSliceBits = 0;
};

/// From an AVCDecoderConfigurationRecord (ISO/IEC 14496-15, 5.3.3); nothing when it is cut.
std::optional<StreamCoding> avcCoding(QByteArrayView configuration);

/// From an HEVCDecoderConfigurationRecord (8.3.3 there); nothing when it is cut or when its picture
/// parameter sets differ in what counts here.
std::optional<StreamCoding> hevcCoding(QByteArrayView configuration);

/// From an AV1CodecConfigurationRecord; nothing for still pictures.
std::optional<StreamCoding> av1Coding(QByteArrayView configuration);

/// num_extra_slice_header_bits of a picture parameter set of HEVC (ITU-T H.265, 7.3.2.3),
/// which begins with its header; nothing when it is cut.
std::optional<int> hevcExtraSliceBits(QByteArrayView unit);

/// The bytes of a NAL unit behind its header, without those that keep start codes away.
QByteArray unescaped(QByteArrayView payload);

} // namespace vignar
