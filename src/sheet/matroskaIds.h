#pragma once

#include <QtGlobal>

namespace vignar
{

/// Identifiers of elements of EBML (RFC 8794, 11) and Matroska (RFC 9559, 5.1), with the bits that
/// tell their length.
namespace MatroskaIds
{
constexpr quint32 ebml = 0x1A45DFA3;
constexpr quint32 docType = 0x4282;
constexpr quint32 segment = 0x18538067;
constexpr quint32 nothing = 0xEC;
constexpr quint32 checksum = 0xBF;
constexpr quint32 seekHead = 0x114D9B74;
constexpr quint32 seek = 0x4DBB;
constexpr quint32 seekId = 0x53AB;
constexpr quint32 seekPosition = 0x53AC;
constexpr quint32 info = 0x1549A966;
constexpr quint32 timestampScale = 0x2AD7B1;
constexpr quint32 tracks = 0x1654AE6B;
constexpr quint32 track = 0xAE;
constexpr quint32 trackNumber = 0xD7;
constexpr quint32 trackType = 0x83;
constexpr quint32 codec = 0x86;
constexpr quint32 codecPrivate = 0x63A2;
constexpr quint32 codecDelay = 0x56AA;
constexpr quint32 seekPreRoll = 0x56BB;
constexpr quint32 trackTimestampScale = 0x23314F;
constexpr quint32 trackOperation = 0xE2;
constexpr quint32 contentEncodings = 0x6D80;
constexpr quint32 cues = 0x1C53BB6B;
constexpr quint32 cuePoint = 0xBB;
constexpr quint32 cueTime = 0xB3;
constexpr quint32 cuePositions = 0xB7;
constexpr quint32 cueTrack = 0xF7;
constexpr quint32 cueCluster = 0xF1;
constexpr quint32 chapters = 0x1043A770;
constexpr quint32 tags = 0x1254C367;
constexpr quint32 attachments = 0x1941A469;
constexpr quint32 cluster = 0x1F43B675;
constexpr quint32 timestamp = 0xE7;
constexpr quint32 clusterPosition = 0xA7;
constexpr quint32 previousSize = 0xAB;
constexpr quint32 simpleBlock = 0xA3;
constexpr quint32 blockGroup = 0xA0;
constexpr quint32 block = 0xA1;
constexpr quint32 referenceBlock = 0xFB;
} // namespace MatroskaIds

} // namespace vignar
