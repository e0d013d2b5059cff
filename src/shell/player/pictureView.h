#pragma once

#include <QImage>
#include <QWidget>

namespace vignar
{

/// The picture in the middle of a dark room.
class PictureView : public QWidget
{
    Q_OBJECT

public:
    explicit PictureView(QWidget *parent = nullptr);

    /// A small picture to show until the first real one comes; null: none.
    void setPoster(const QImage &poster);
    /// A picture made for the room.
    void setPicture(const QImage &picture);
    /// Words in the place of a picture; empty: none.
    void setMessage(const QString &message);

    /// In device pixels.
    QSize room() const;
    QSize sizeHint() const override { return {720, 405}; }

Q_SIGNALS:
    void roomChanged(const QSize &room);
    void clicked();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    QImage m_picture;
    QString m_message;
    bool m_isPoster = false;
};

} // namespace vignar
