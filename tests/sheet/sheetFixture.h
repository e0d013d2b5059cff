#pragma once

#include <QColor>
#include <QImage>

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
