#include "shell/player/pictureView.h"

#include <QMouseEvent>
#include <QPainter>

namespace vignar
{

namespace
{

/// Dark on every desktop: a bright room would change how the picture looks.
constexpr QColor roomColour(0x14, 0x14, 0x16);
constexpr QColor messageColour(0xd8, 0xd8, 0xdc);
constexpr double posterOpacity = 0.6;

} // namespace

PictureView::PictureView(QWidget *parent) : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(240, 135);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void PictureView::setPoster(const QImage &poster)
{
    m_picture = poster;
    m_isPoster = true;
    update();
}

void PictureView::setPicture(const QImage &picture)
{
    m_picture = picture;
    m_isPoster = false;
    update();
}

void PictureView::setMessage(const QString &message)
{
    m_message = message;
    update();
}

QSize PictureView::room() const
{
    return (QSizeF(size()) * devicePixelRatioF()).toSize();
}

void PictureView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), roomColour);
    if (!m_picture.isNull()) {
        // A picture made for the room lands on whole device pixels; only a poster, and one
        // of a moment ago while the window is being resized, is scaled.
        const QSizeF fitting = QSizeF(m_picture.size()).scaled(room(), Qt::KeepAspectRatio);
        const bool fits = !m_isPoster && m_picture.size().boundedTo(room()) == m_picture.size();
        const QSizeF shown =
            (fits && fitting.width() - m_picture.width() < 2 ? QSizeF(m_picture.size()) : fitting) /
            devicePixelRatioF();
        const double toDevice = devicePixelRatioF();
        const QPointF corner(std::floor((width() - shown.width()) / 2 * toDevice) / toDevice,
                             std::floor((height() - shown.height()) / 2 * toDevice) / toDevice);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.setOpacity(m_isPoster && m_message.isEmpty() ? 1 : m_isPoster ? posterOpacity : 1);
        painter.drawImage(QRectF(corner, shown), m_picture);
    }
    if (m_message.isEmpty())
        return;
    painter.setOpacity(1);
    painter.fillRect(rect(), QColor(0x14, 0x14, 0x16, 0xb0));
    painter.setPen(messageColour);
    painter.drawText(rect().adjusted(24, 24, -24, -24), Qt::AlignCenter | Qt::TextWordWrap,
                     m_message);
}

void PictureView::resizeEvent(QResizeEvent *)
{
    Q_EMIT roomChanged(room());
}

void PictureView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
        Q_EMIT clicked();
}

} // namespace vignar
