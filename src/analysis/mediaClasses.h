#pragma once

#include <QString>
#include <QStringView>

namespace vignar
{

/// Families of files and codecs that the analysis treats alike. Extensions and codec
/// names are compared without case.

/// "mpv", "m2v", "m1v": a video stream without a container.
bool isMpegElementaryExtension(const QString &extension);
/// Program and transport streams: "vob", "ts", "mod", "mpeg", "mpg", "vro", "tod".
bool isMpegProgramExtension(const QString &extension);
/// Either of the two.
bool isMpegExtension(const QString &extension);
/// "vob", "vro".
bool isDvdExtension(const QString &extension);
/// Files on whose codec and duration ffmpeg is not believed against the movie framework.
bool isFfmpegDoubtfulExtension(const QString &extension);

/// The tag of a protected stream ("drms", "drmi") that occurs in the text; null: none.
QString drmTagIn(QStringView text);
bool isDrmCodec(const QString &codec);
/// A DV stream by its four-character code.
bool isDvCodec(const QString &codec);
/// Chroma format of a DV stream, from its code in lower case ("yuv411p").
QString dvChroma(const QString &codec);
bool isMotionJpegCodec(const QString &codec);
bool isIndeoCodec(const QString &codec);
/// ProRes and the Apple intermediate codec.
bool isAppleIntermediateCodec(const QString &codec);

} // namespace vignar
