#pragma once

#include <QString>

namespace vignar
{

/// What our WebVTT files begin with; the name of the software follows.
inline constexpr char webVttStart[] = "WEBVTT\n\nNOTE made by ";

/// True for a file that says in its metadata that this program has made it: the creator tool
/// in the XMP of a JPEG, PNG or WebP picture, the creator of a PDF document, the first note of
/// a WebVTT file. A link says nothing. Files of others are read with the greatest distrust: a
/// few hundred kilobytes at most, whatever their headers say, and never a pipe or a device.
bool bearsOurMark(const QString &path);

} // namespace vignar
