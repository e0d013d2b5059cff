#pragma once

#include "classShared/sourceDico.h"

#include <QStringView>

#include <span>

namespace vignar
{

enum class AspectKind { pixel = 0, display = 1 };

/// The aspect ratio that a piece of a stream line states ("64:45"), or a null text.
QString ffAspectRatioStr(const QString &piece, AspectKind kind);

/// A codec text without its protection: the tag of a protected stream in place of the
/// name, any other text unchanged.
QString ffInfosCodecParser(const QString &codec);

/// The types of streams that a source record knows.
enum class StreamType { other, video, attachedPicture, audio, subtitle };

/// True for a line that ffmpeg prints of its own about a stream, whatever its type.
bool isStreamLine(QStringView line);
StreamType streamType(QStringView line);

/// Each adds to infos what a stream line tells, under the keys of that number. A piece
/// that no rule knows is passed over.
void readAudioLine(QStringView line, int number, Dico &infos);
void readVideoLine(QStringView line, int number, Dico &infos);
/// following: the lines after the stream's, of which the first two may hold its title.
void readSubtitleLine(QStringView line, std::span<const QString> following, int number,
                      Dico &infos);

/// Clockwise turn of 90, 180 or 270 degrees that a line of a stream's side data asks
/// for; 0 for any other line, and for a turn that ffmpeg does not make in quarters.
int quarterTurn(QStringView line);
/// Makes the record of a video stream that of its turned picture: sides and aspect
/// ratios change places for 90 and 270 degrees.
void turnUpright(Dico &infos, int number, int clockwiseDegrees);

} // namespace vignar
