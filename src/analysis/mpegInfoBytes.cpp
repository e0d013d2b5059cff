// The byte level of the reader: blocks, packets, start codes and bits.
#include "analysis/mpegInfo.h"

#include "classShared/lineLog.h"

#include <algorithm>

namespace vignar
{
namespace
{

constexpr quint8 programEndCode = 0xB9;
/// The system header; every start code from here to the last video stream begins a packet.
constexpr quint8 firstPacketCode = 0xBB;
constexpr quint8 firstVideoCode = 0xE0;
constexpr quint8 lastVideoCode = 0xEF;

} // namespace

void mpegInfo::resetBuffer()
{
    m_dataOffset = 0;
    m_dataLength = 0;
    m_bitOffset = 0;
}

bool mpegInfo::readBlock(qint64 length)
{
    const qint64 count =
        m_file && length > 0 ? m_file->read(reinterpret_cast<char *>(m_bytes.data()), length) : 0;
    m_dataOffset = 0;
    m_dataLength = qint32(std::max<qint64>(count, 0));
    m_bytesRead += m_dataLength;
    return m_dataLength > 0;
}

bool mpegInfo::refill()
{
    const qint64 left = m_file ? m_readEnd - m_file->pos() : 0;
    return readBlock(std::min<qint64>(left, qint64(m_bytes.size())));
}

bool mpegInfo::refillBackward()
{
    quint64 length = m_bytes.size();
    if (m_position < length) {
        logLine(u"getByteBackward     : m_position(%llu) < m_dataLength(%ld)", m_position, length);
        length = m_position;
    }
    m_position -= length;
    const bool isRead = m_file && m_file->seek(qint64(m_position)) && readBlock(qint64(length));
    // A file that was cut meanwhile leaves a gap: what stands before it is not adjacent.
    if (!isRead || quint64(m_dataLength) != length)
        m_dataLength = 0;
    m_dataOffset = m_dataLength;
    return m_dataLength > 0;
}

quint8 mpegInfo::getRealByte()
{
    if (m_dataOffset >= m_dataLength && !refill())
        return m_byte = 0;
    return m_byte = m_bytes[size_t(m_dataOffset++)];
}

void mpegInfo::skipRealByte(int count)
{
    while (count > 0 && (m_dataOffset < m_dataLength || refill())) {
        const int step = std::min(count, m_dataLength - m_dataOffset);
        m_dataOffset += step;
        count -= step;
    }
}

quint8 mpegInfo::getByteBackward()
{
    if (m_dataOffset <= 0 && !refillBackward())
        return m_byte = 0;
    return m_byte = m_bytes[size_t(--m_dataOffset)];
}

template <class NextByte>
std::optional<quint8> mpegInfo::nextCode(NextByte nextByte)
{
    m_bitOffset = 0;
    for (int zeros = 0;;) {
        const quint8 byte = nextByte();
        if (isAtEnd())
            return std::nullopt;
        if (byte == 1 && zeros == 2)
            break;
        zeros = byte == 0 ? std::min(zeros + 1, 2) : 0;
    }
    const quint8 code = nextByte();
    return isAtEnd() ? std::nullopt : std::optional(code);
}

quint8 mpegInfo::findRealCode()
{
    return nextCode([this] { return getRealByte(); }).value_or(0);
}

quint8 mpegInfo::findCode()
{
    return nextCode([this] { return getByte(); }).value_or(sequenceEndCode);
}

bool mpegInfo::findCodeBackward(quint8 code)
{
    m_bitOffset = 0;
    const quint32 wanted = 0x100U | code;
    const qint64 lastToRead = m_bytesRead + lastGopSearchLimit;
    // The four bytes from the one last read on, as they follow each other in the file.
    quint32 window = 0xFFFFFFFF;
    while (window != wanted) {
        const quint8 byte = getByteBackward();
        if (isAtEnd() || m_bytesRead > lastToRead)
            return false;
        window = quint32(byte) << 24 | window >> 8;
    }
    return getLong() == wanted;
}

quint8 mpegInfo::getByte()
{
    if (!m_mux)
        return getRealByte();
    while (m_videoLength == 0 || isBeyondPacket()) {
        if (!enterVideoPacket()) {
            m_readEnd = 0; // Data that a code has ended do not go on after it.
            resetBuffer();
            return m_byte = 0;
        }
    }
    --m_videoLength;
    return getRealByte();
}

/// The length counted for the video of an MPEG-2 packet reaches one byte beyond the packet
/// where its header states its length rightly: the next start code must not lose that byte.
bool mpegInfo::isBeyondPacket()
{
    if (!m_isMpeg2Packet || m_videoLength != 1)
        return false;
    std::array<quint8, 3> next{0xFF, 0xFF, 0xFF};
    const int buffered = std::min(int(next.size()), m_dataLength - m_dataOffset);
    std::copy_n(m_bytes.begin() + m_dataOffset, buffered, next.begin());
    if (const int missing = int(next.size()) - buffered; missing > 0) {
        const qint64 position = m_file->pos();
        const qint64 count =
            m_file->read(reinterpret_cast<char *>(&next[size_t(buffered)]), missing);
        m_bytesRead += std::max<qint64>(count, 0);
        m_file->seek(position);
    }
    return next == std::array<quint8, 3>{0, 0, 1};
}

/// Goes on to the next packet that has video; false at the end of the data.
bool mpegInfo::enterVideoPacket()
{
    for (m_videoLength = 0; m_videoLength == 0;) {
        const quint8 code = findRealCode();
        if (code == sequenceEndCode || code == programEndCode || code == 0)
            return false;
        if (code < firstPacketCode || code > lastVideoCode)
            continue;
        int length = getRealByte() << 8;
        length |= getRealByte();
        if (code < firstVideoCode)
            skipRealByte(length);
        else
            readPacketHeader(length);
    }
    return true;
}

void mpegInfo::readPacketHeader(int length)
{
    const quint8 first = getRealByte();
    m_isMpeg2Packet = first >> 6 == 0b10;
    const int payload =
        m_isMpeg2Packet ? readMpeg2PacketHeader(length) : readMpeg1PacketHeader(length, first);
    // A header may claim more than its packet holds.
    m_videoLength = std::max(payload, 0);
}

int mpegInfo::readMpeg2PacketHeader(int length)
{
    skipRealByte(1);
    const int headerLength = getRealByte();
    skipRealByte(headerLength);
    return length - 2 - headerLength;
}

int mpegInfo::readMpeg1PacketHeader(int length, quint8 first)
{
    int payload = length - 1;
    quint8 last = first;
    if (first >> 6 == 0b01) { // Size of the decoder's buffer.
        skipRealByte(1);
        last = getRealByte();
        payload = length - 3;
    }
    // Time stamps: of presentation alone, or of presentation and decoding.
    const int stamps = last >> 4 == 0b0010 ? 4 : last >> 4 == 0b0011 ? 9 : 0;
    skipRealByte(stamps);
    return payload - stamps;
}

quint32 mpegInfo::getLong()
{
    quint32 value = 0;
    for (int i = 0; i < 4; ++i)
        value = value << 8 | getByte();
    return value;
}

quint32 mpegInfo::getBits(int count)
{
    quint32 value = 0;
    while (count > 0) {
        if (m_bitOffset == 0)
            getByte();
        const int taken = std::min(count, 8 - m_bitOffset);
        const quint32 bits = quint32(m_byte) >> (8 - m_bitOffset - taken);
        value = value << taken | (bits & ((1U << taken) - 1));
        m_bitOffset = (m_bitOffset + taken) % 8;
        count -= taken;
    }
    return value;
}

} // namespace vignar
