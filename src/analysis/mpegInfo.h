#pragma once

#include <QFile>
#include <QString>

#include <array>
#include <memory>
#include <optional>

namespace vignar
{

/// Reader of the headers of MPEG-1 and MPEG-2 video (ISO/IEC 11172-2 and 13818-2), as an
/// elementary stream or inside a program stream (11172-1, 13818-1).
///
/// Whatever a file holds, reading it ends: nothing is read beyond the size that it had when
/// it was opened, the first group of pictures must stand in its first headerSearchLimit bytes
/// and the last one in its last lastGopSearchLimit bytes.
class mpegInfo
{
public:
    /// Four numbers as a group of pictures states them; nothing holds them below 60 or 24.
    struct timecode {
        quint8 hours = 0;
        quint8 minutes = 0;
        quint8 seconds = 0;
        quint8 pictures = 0;
    };

    /// More than ten seconds at the 9.8 Mbit/s of a DVD: time enough for the first video
    /// packet and the first group of pictures.
    static constexpr qint64 headerSearchLimit = 16 * 1024 * 1024;
    /// Seven seconds at 300 Mbit/s, the highest rate of any level. A longer file of a single
    /// group would have to be read through twice.
    static constexpr qint64 lastGopSearchLimit = 256 * 1024 * 1024;

    /// The start code of the end of a sequence, and what findCode() takes the end of data for.
    static constexpr quint8 sequenceEndCode = 0xB7;

    mpegInfo() = default;
    /// Over the first byte of a file, for the byte level; at the end of the data where the
    /// file cannot be opened.
    explicit mpegInfo(const QString &path);

    /// Null on success, else why not: "File not found" (or a folder), "File of length 0",
    /// "Reading error", "Not an MPEG-2 file" or "No GOP found". Only regular files are
    /// opened. The file is closed afterwards, and the fields hold what was read until then.
    QString readInformations(const QString &path);

    bool isMuxed() const { return m_mux; }
    bool isMPeg2() const { return m_isMPeg2; }
    /// Pixels.
    int horizontalSize() const { return m_horizontalSize; }
    int verticalSize() const { return m_verticalSize; }
    bool isWideScreen() const { return m_isWideScreen; }
    /// Pictures per second; 0 for a reserved code.
    double frameRate() const { return m_frameRate; }
    /// Bits per second.
    long bitRate() const { return m_bitRate; }
    bool isProgressive() const { return m_isProgressive; }
    /// 1: 4:2:0, 2: 4:2:2, 3: 4:4:4; 0 without a sequence extension.
    int chromaFormat() const { return m_chromaFormat; }
    /// Of the first group of pictures, and of the end of the last picture in coded order;
    /// zero in program streams.
    timecode begin() const { return m_begin; }
    timecode end() const { return m_end; }
    timecode duration() const { return m_duration; }
    /// Bytes read from the file so far.
    qint64 bytesRead() const { return m_bytesRead; }

    // The byte level. Beyond the end of the data a byte reads as 0.
    /// True once a byte was asked for that there is not.
    bool isAtEnd() const { return m_dataLength == 0; }
    quint8 getRealByte();
    void skipRealByte(int count);
    /// The code byte of the next start code (00 00 01) in the raw bytes; 0 at the end.
    quint8 findRealCode();
    /// The next byte of the video: raw, or out of the video packets of a program stream.
    quint8 getByte();
    /// Four bytes of the video, the first one highest.
    quint32 getLong();
    /// Up to 32 bits of the video, the first one highest.
    quint32 getBits(int count);
    /// As findRealCode(), in the video; sequenceEndCode at the end.
    quint8 findCode();
    /// The raw byte before the last one, going back from the end of the file.
    quint8 getByteBackward();
    /// Goes back to a start code and reads it; false when none was found.
    bool findCodeBackward(quint8 code);
    /// The 25 bits that follow the start code of a group of pictures.
    timecode readTimeCode();

private:
    QString open(const QString &path);
    void readSequenceHeader();
    bool readUpToFirstGop();
    void readExtension();
    bool readTimeCodes();
    void addPicture();

    template <class NextByte>
    std::optional<quint8> nextCode(NextByte nextByte);
    bool enterVideoPacket();
    void readPacketHeader(int length);
    int readMpeg2PacketHeader(int length);
    int readMpeg1PacketHeader(int length, quint8 first);
    bool isBeyondPacket();
    void resetBuffer();
    bool refill();
    bool refillBackward();
    bool readBlock(qint64 length);

    std::unique_ptr<QFile> m_file;
    quint64 m_size = 0;
    qint32 m_dataOffset = 0;
    qint32 m_dataLength = 0;
    /// Bits of m_byte that were taken, below 8; 0: getBits() begins with a new byte.
    qint32 m_bitOffset = 0;
    qint32 m_videoLength = 0;
    std::array<quint8, 2048> m_bytes{};
    quint8 m_byte = 0;
    quint64 m_position = 0;
    bool m_mux = false;
    qint32 m_horizontalSize = 0;
    qint32 m_verticalSize = 0;
    bool m_isWideScreen = false;
    double m_frameRate = 0;
    long m_bitRate = 0;
    bool m_isMPeg2 = false;
    bool m_isProgressive = false;
    qint32 m_chromaFormat = 0;
    timecode m_begin;
    timecode m_end;
    timecode m_duration;

    /// File offset from which on there is nothing to read forward.
    qint64 m_readEnd = 0;
    qint64 m_bytesRead = 0;
    /// The current packet has a header of MPEG-2.
    bool m_isMpeg2Packet = false;
};

} // namespace vignar
