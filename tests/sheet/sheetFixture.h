#pragma once

#include "sheet/sheetComposer.h"

#include <QColor>
#include <QFile>
#include <QImage>
#include <QProcess>

#include <csignal>
#include <sys/resource.h>

/// While it lives no file of this process can grow beyond a few bytes, as on a volume
/// that is full; unlike a read-only folder this holds for root as well.
class FullDisk
{
public:
    FullDisk()
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit full{100, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &full);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_before{};
    void (*m_handler)(int);
};

inline QImage plain(const QSize &size, const QColor &colour)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

/// The same colour but for what JPEG loses.
inline bool isNear(const QColor &left, const QColor &right)
{
    return qAbs(left.red() - right.red()) + qAbs(left.green() - right.green()) +
               qAbs(left.blue() - right.blue()) <
           24;
}

/// What a program prints; empty when it does not run.
inline QByteArray outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished();
    return process.readAllStandardOutput();
}

/// A document's page as its viewers show it.
inline QImage shownPage(const QString &path, int dpi)
{
    const QStringList options{QStringLiteral("-r"), QString::number(dpi), QStringLiteral("-png"),
                              QStringLiteral("-singlefile"), path};
    return QImage::fromData(outputOf(QStringLiteral("pdftoppm"), options));
}

/// A sheet made and shown, a document at 250 dots per inch; null when it is not made.
inline QImage shownSheet(const vignar::Dico &display, vignar::SheetFormat format)
{
    if (!vignar::composeSheet(display, format))
        return {};
    const QString path =
        vignar::sheetPath(vignar::readStr(display, vignar::Keys::dstPathStr), format);
    return format == vignar::SheetFormat::pdf ? shownPage(path, 250) : QImage(path);
}

/// The quality that a JPEG was written with, 90 or 100, by the first step of its first
/// quantisation table; else 0.
inline int qualityOfJpeg(const QString &path)
{
    QFile file(path);
    const QByteArray content = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    // Segments of a marker and a length, after the two bytes of the start.
    for (qsizetype at = 2; at + 5 < content.size();) {
        if (uchar(content[at + 1]) == 0xdb)
            return content[at + 5] == 1 ? 100 : content[at + 5] == 3 ? 90 : 0;
        at += 2 + uchar(content[at + 2]) * 256 + uchar(content[at + 3]);
    }
    return 0;
}
