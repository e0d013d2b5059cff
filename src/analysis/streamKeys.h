#pragma once

#include "classShared/keys.h"

namespace vignar
{

/// Keys that only the analysis uses: of what ffStreamId() returns the type letters and
/// the properties of one stream of a type.
namespace StreamKeys
{

inline constexpr Key<Dico> v{"v"};
inline constexpr Key<Dico> a{"a"};
inline constexpr Key<Dico> s{"s"};

inline constexpr Key<int> id{"id"};
inline constexpr Key<QString> codec{"codec"};
inline constexpr Key<int> bitrate{"bitrate"};
inline constexpr Key<int> channels{"channels"};
inline constexpr Key<QString> lang{"lang"};
inline constexpr Key<int> rate{"rate"};
/// Start of the stream after the video's, in milliseconds.
inline constexpr Key<double> offsetMs{"offsetMs"};

/// Chroma format that a DV codec implies, filed under the container.
inline constexpr Key<QString> w0_chroma{"w0_chroma"};

} // namespace StreamKeys

/// Key of a stream's start offset in the flat dictionary: the type letter and ffmpeg's
/// own stream id, not the running number ("a1_offsetMs").
inline QString offsetMsKey(QChar type, int streamId)
{
    return type + QString::number(streamId) + QLatin1Char('_') + StreamKeys::offsetMs.text;
}

} // namespace vignar
