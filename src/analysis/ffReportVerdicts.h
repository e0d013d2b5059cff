#pragma once

#include <QString>

namespace vignar
{

/// What the messages in a report tell of ffmpeg's chances with the source.
enum class ReportVerdict {
    usable,
    /// Decoding failed before there were pictures enough.
    decodesTooLittle,
    /// ffmpeg crashed, or could not handle what it decoded.
    notCompliant,
};

/// Pictures that the run behind the report asks for. A run that got them all has
/// succeeded, whatever it complained of on the way: a recording that begins between two
/// key frames always complains.
inline constexpr int probedPictures = 10;

/// The report must hold ffmpeg's own words alone (withoutSourcePath(), withoutMetadata()).
ReportVerdict reportVerdict(const QString &report);

/// Key of the text that says why a source that no decoder can read is refused: its video is
/// protected ("drmi", common encryption, a Windows Media licence), or nothing is known.
QString unreadableReason(const QString &report);

} // namespace vignar
