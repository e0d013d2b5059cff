#include "analysis/mpegInfo.h"

#include <QFileInfo>
#include <QScopeGuard>

#include <algorithm>

#include <fcntl.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace vignar
{
namespace
{

// Code bytes of start codes.
constexpr quint8 pictureCode = 0x00;
constexpr quint8 extensionCode = 0xB5;
constexpr quint8 groupCode = 0xB8;

constexpr quint32 sequenceHeader = 0x000001B3;
constexpr quint32 packHeader = 0x000001BA;

constexpr int sequenceExtensionId = 1;
constexpr int wideScreenCode = 3;
constexpr int bitRateUnit = 400;

double frameRateOf(quint32 code)
{
    constexpr std::array<double, 9> rates{
        0, 24000 / 1001.0, 24, 25, 30000 / 1001.0, 30, 50, 60000 / 1001.0, 60,
    };
    return code < rates.size() ? rates.at(code) : 0;
}

/// Takes from the next higher field until the lower one is no longer negative.
void borrow(int &field, int base, int &higher)
{
    for (; field < 0 && base > 0; --higher)
        field += base;
    field = std::max(field, 0);
}

mpegInfo::timecode difference(mpegInfo::timecode end, mpegInfo::timecode begin,
                              int picturesPerSecond)
{
    int hours = end.hours - begin.hours;
    int minutes = end.minutes - begin.minutes;
    int seconds = end.seconds - begin.seconds;
    int pictures = end.pictures - begin.pictures;
    int days = 0;
    borrow(pictures, picturesPerSecond, seconds);
    borrow(seconds, 60, minutes);
    borrow(minutes, 60, hours);
    borrow(hours, 24, days);
    return {quint8(hours), quint8(minutes), quint8(seconds), quint8(pictures)};
}

/// Opened without waiting for the other end of a pipe; nothing but a regular file.
std::unique_ptr<QFile> openRegularFile(const QString &path)
{
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0)
        return nullptr;
    auto file = std::make_unique<QFile>();
    if (!file->open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered,
                    QFileDevice::AutoCloseHandle))
        return nullptr;
    struct stat status = {};
    const bool isRegular = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    return isRegular ? std::move(file) : nullptr;
}

} // namespace

mpegInfo::mpegInfo(const QString &path)
{
    open(path);
}

QString mpegInfo::open(const QString &path)
{
    *this = mpegInfo();
    const QFileInfo info(path);
    if (!info.exists() || info.isDir())
        return u"File not found"_s;
    m_size = quint64(info.size());
    if (m_size == 0)
        return u"File of length 0"_s;
    m_file = openRegularFile(path);
    if (!m_file)
        return u"Reading error"_s;
    m_readEnd = std::min(qint64(m_size), headerSearchLimit);
    return {};
}

QString mpegInfo::readInformations(const QString &path)
{
    if (const QString error = open(path); !error.isNull())
        return error;
    const auto closed = qScopeGuard([this] { m_file.reset(); });
    quint32 code = getLong();
    if (code == packHeader) {
        m_mux = true;
        resetBuffer();
        m_videoLength = 0;
        m_file->seek(0);
        code = getLong();
    }
    if (code != sequenceHeader)
        return u"Not an MPEG-2 file"_s;
    readSequenceHeader();
    if (!readUpToFirstGop() || (!m_mux && !readTimeCodes()))
        return u"No GOP found"_s;
    return {};
}

void mpegInfo::readSequenceHeader()
{
    m_horizontalSize = qint32(getBits(12));
    m_verticalSize = qint32(getBits(12));
    m_isWideScreen = getBits(4) == wideScreenCode;
    m_frameRate = frameRateOf(getBits(4));
    m_bitRate = long(getBits(18)) * bitRateUnit;
}

bool mpegInfo::readUpToFirstGop()
{
    for (;;) {
        switch (findCode()) {
        case extensionCode:
            readExtension();
            break;
        case groupCode:
            return true;
        case sequenceEndCode:
            return false;
        default:
            break;
        }
    }
}

void mpegInfo::readExtension()
{
    if (getBits(4) != sequenceExtensionId)
        return;
    m_isMPeg2 = true;
    getBits(8); // Profile and level.
    m_isProgressive = getBits(1) != 0;
    m_chromaFormat = qint32(getBits(2));
}

bool mpegInfo::readTimeCodes()
{
    m_begin = readTimeCode();
    resetBuffer();
    m_position = m_size;
    m_readEnd = qint64(m_size);
    if (!findCodeBackward(groupCode))
        return false;
    m_end = readTimeCode();
    for (quint8 code = findCode(); code != sequenceEndCode; code = findCode()) {
        if (code == pictureCode)
            addPicture();
    }
    m_duration = difference(m_end, m_begin, int(m_frameRate));
    return true;
}

void mpegInfo::addPicture()
{
    // Whole pictures: at 29.97 a second has 29. Without a rate pictures make no seconds.
    const int picturesPerSecond = int(m_frameRate);
    if (picturesPerSecond == 0 || ++m_end.pictures < picturesPerSecond)
        return;
    m_end.pictures -= quint8(picturesPerSecond);
    if (++m_end.seconds < 60)
        return;
    m_end.seconds -= 60;
    if (++m_end.minutes < 60)
        return;
    m_end.minutes -= 60;
    if (++m_end.hours >= 24)
        m_end.hours -= 24;
}

mpegInfo::timecode mpegInfo::readTimeCode()
{
    timecode code;
    getBits(1); // Drop flag.
    code.hours = quint8(getBits(5));
    code.minutes = quint8(getBits(6));
    getBits(1); // Marker.
    code.seconds = quint8(getBits(6));
    code.pictures = quint8(getBits(6));
    return code;
}

} // namespace vignar
