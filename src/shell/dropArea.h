#pragma once

#include <QAbstractButton>
#include <QList>
#include <QTimer>
#include <QUrl>

class QMimeData;
class QToolButton;

namespace vignar
{

/// The paths of the local files and folders in a drag, in its order.
QStringList localPaths(const QMimeData &data);
/// Names that are not UTF-8 get their stand-ins.
QStringList localPaths(const QList<QUrl> &urls);

/// The large area that receives files and folders. A click, Enter or the space bar asks
/// for the open panel.
class DropArea : public QAbstractButton
{
    Q_OBJECT

public:
    explicit DropArea(QWidget *parent = nullptr);

    /// The words in the middle.
    void setCaption(const QString &caption);
    /// While sources are analysed: shows that it works, and the button that stops it.
    void setBusy(bool isBusy);
    bool isBusy() const { return m_isBusy; }
    /// What is being analysed, and which of how many.
    void setActivity(const QString &words, const QString &fileName);
    void setStopVisible(bool isVisible);
    /// Shown while something is dragged over the window.
    void setDropWelcome(bool isWelcome);

    QSize sizeHint() const override;

Q_SIGNALS:
    /// Only with at least one path.
    void dropped(const QStringList &paths);
    void stopRequested();

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void paintFrame(QPainter &painter) const;
    void paintWheel(QPainter &painter, const QRectF &place) const;
    void updateAccessibleName();

    QString m_caption;
    QString m_activity;
    QString m_fileName;
    QToolButton *m_stop;
    QTimer m_turn;
    int m_angle = 0;
    bool m_isBusy = false;
    bool m_isWelcome = false;
};

} // namespace vignar
