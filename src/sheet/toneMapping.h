#pragma once

#include "classShared/sourceDico.h"

#include <QSize>

namespace vignar
{

/// How the pictures of a source of high dynamic range become pictures of BT.709. Both map
/// alike: 203 cd/m², the reference white of BT.2408, and half of it stay what they are,
/// what is brighter is compressed. docs/decisions/colours.md tells why.
enum class ToneMapper {
    /// ffmpeg's zscale and tonemap, in floating point.
    zscale,
    /// Tables for each colour, of filters that every ffmpeg has. Bright colours pale.
    tables
};

/// True for what is stored in PQ or HLG.
bool isHighDynamicRange(const SourceDico &source);

/// The piece of a filter text that makes full-range BT.709 pictures of a size in pixels,
/// ending with a comma; empty for a source of standard range. What the record does not
/// tell is taken to be as BT.2100 has it.
QString toneMapping(const SourceDico &source, const QSize &size, ToneMapper mapper);

/// True when a filter text holds such a piece.
bool isToneMapped(const QString &filter);

/// The better of the mappers that a program has, which is run once for its answer; this
/// waits for it. A program that does not answer gets the tables. Any thread.
ToneMapper toneMapperOf(const QString &ffmpeg);

} // namespace vignar
