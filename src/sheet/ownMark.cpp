#include "sheet/ownMark.h"

#include "settings/applicationPlaces.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>

#include <fcntl.h>
#include <sys/stat.h>

namespace vignar
{

namespace
{

/// Our metadata come before the pixels, but for WebP, where a block has a length of its own.
constexpr qint64 headSize = 256 * 1024;
constexpr qint64 largestBlock = 64 * 1024;
constexpr int blocksRead = 64;

constexpr QByteArrayView jpegStart("\xff\xd8");
constexpr QByteArrayView pngStart("\x89PNG\r\n\x1a\n");
constexpr QByteArrayView pdfStart("%PDF-");
constexpr QByteArrayView jpegXmp("http://ns.adobe.com/xap/1.0/\0", 29);
constexpr QByteArrayView pngXmp("XML:com.adobe.xmp\0", 18);
constexpr uchar startOfScan = 0xda;
constexpr uchar application1 = 0xe1;

/// "Vignar ", what the name of the software begins with.
QString ownName()
{
    return QString(bundleName) + QLatin1Char(' ');
}

bool isRegularFile(int file)
{
    struct stat found;
    return ::fstat(file, &found) == 0 && S_ISREG(found.st_mode);
}

/// Opened without waiting for a pipe's other end, and without following a link.
bool openRegularFile(QFile &file, const QString &path)
{
    const int opened =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    return opened >= 0 && file.open(opened, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle) &&
           isRegularFile(opened);
}

bool isOurXmp(QByteArrayView xmp)
{
    const QByteArray name = ownName().toLatin1();
    return xmp.contains("CreatorTool=\"" + name) || xmp.contains("CreatorTool>" + name);
}

/// A block of bytes that begins with a name; its content without it, else empty.
QByteArrayView contentAfter(QByteArrayView block, QByteArrayView name)
{
    return block.startsWith(name) ? block.sliced(name.size()) : QByteArrayView();
}

bool isOurJpeg(QByteArrayView head)
{
    qsizetype at = jpegStart.size();
    while (at + 4 <= head.size() && uchar(head[at]) == 0xff && uchar(head[at + 1]) != startOfScan) {
        const qsizetype length = qFromBigEndian<quint16>(head.data() + at + 2);
        const QByteArrayView block =
            head.sliced(at + 4).first(std::clamp<qsizetype>(length - 2, 0, head.size() - at - 4));
        if (uchar(head[at + 1]) == application1 && isOurXmp(contentAfter(block, jpegXmp)))
            return true;
        at += 2 + std::max<qsizetype>(length, 2);
    }
    return false;
}

bool isOurPng(QByteArrayView head)
{
    qsizetype at = pngStart.size();
    while (at + 8 <= head.size()) {
        const qsizetype length = qFromBigEndian<quint32>(head.data() + at);
        const QByteArrayView type = head.sliced(at + 4, 4);
        const QByteArrayView block =
            head.sliced(at + 8).first(std::min(length, head.size() - at - 8));
        if (type == "IDAT")
            return false;
        if (type == "iTXt" && isOurXmp(contentAfter(block, pngXmp)))
            return true;
        constexpr qsizetype checksum = 4;
        at += 8 + length + checksum;
    }
    return false;
}

bool isOurWebp(QFile &file)
{
    qint64 at = 12;
    for (int block = 0; block < blocksRead && file.seek(at); ++block) {
        const QByteArray header = file.read(8);
        if (header.size() < 8)
            return false;
        const qint64 length = qFromLittleEndian<quint32>(header.constData() + 4);
        if (header.startsWith("XMP "))
            return isOurXmp(file.read(std::min(length, largestBlock)));
        at += 8 + length + length % 2;
    }
    return false;
}

/// Texts of documents are big-endian UTF-16 behind a byte-order mark.
bool isOurPdf(QByteArrayView head)
{
    QByteArray creator("/Creator (\xfe\xff");
    for (const QChar letter : ownName())
        creator.append('\0').append(letter.toLatin1());
    return head.contains(creator);
}

} // namespace

bool bearsOurMark(const QString &path)
{
    QFile file;
    if (!openRegularFile(file, path))
        return false;
    const QByteArray head = file.read(headSize);
    if (head.startsWith(jpegStart))
        return isOurJpeg(head);
    if (head.startsWith(pngStart))
        return isOurPng(head);
    if (head.startsWith("RIFF") &&
        QByteArrayView(head).sliced(std::min<qsizetype>(8, head.size())).startsWith("WEBP"))
        return isOurWebp(file);
    if (head.startsWith(pdfStart))
        return isOurPdf(head);
    return head.startsWith(webVttStart + ownName().toLatin1());
}

} // namespace vignar
