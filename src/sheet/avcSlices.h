#pragma once

class QByteArray;

namespace vignar
{

struct CodedPicture;
class PictureIndex;

/// What the slices of an H.264 picture are.
enum class SliceKind {
    /// Intra, all of them.
    intra,
    /// The first is not.
    other,
    /// Intra at first, others later, as in two fields; or nothing that can be read.
    unclear
};

/// Reads the beginnings of a picture's slices (ITU-T H.264, 7.3.2 to 7.3.3) up to the first
/// that is not intra.
SliceKind sliceKind(PictureIndex &index, const CodedPicture &picture);

} // namespace vignar
