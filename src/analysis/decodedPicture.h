#pragma once

#include "classShared/keys.h"

#include <QSize>

namespace vignar
{

/// What the decoded pictures of a source are like. ffmpeg has turned them already where the
/// source asks for it.
struct DecodedPicture {
    /// Empty: not known.
    QSize size;
    /// Pixel aspect ratio ("64:45"); null: not known.
    QString par;
    /// Pictures per second; 0: not known.
    double fps = 0;
};

/// What the first line of a file of decoded pictures says ("YUV4MPEG2 W640 H360 F25:1 Ip A1:1").
DecodedPicture decodedPictureOf(const QString &header);

/// Completes the first video stream of ffInfos() where the container describes a stream that
/// ffmpeg could not look into, such as that of a recording cut between two keyframes: with
/// the size, the aspects and the rate of the decoded picture or else of the report's output,
/// and with the pixel format and the colours that the decoder found. A stream whose size is
/// stated is left alone.
void completeFromDecoded(Dico &infos, const DecodedPicture &picture, const QString &report);

} // namespace vignar
