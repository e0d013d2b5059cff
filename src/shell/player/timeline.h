#pragma once

#include "sheet/chosenInstants.h"

#include <QSlider>

namespace vignar
{

/// The pictures of a sheet as the player shows them.
struct PlannedPictures {
    /// Seconds, as planned before any choice, ascending.
    std::vector<double> instants;
    ChosenInstants chosen;

    /// Where the picture of an index is taken.
    double instant(int index) const
    {
        return chosen.value(index, instants[static_cast<size_t>(index)]);
    }
};

/// "1:02:05.40", cut to hundredths.
QString clockText(double seconds);

/// The time axis of a source, from left to right in every language as on any player, with a
/// mark at each picture of its sheet: a tick where it is planned, a diamond where the user
/// has chosen it.
class Timeline : public QSlider
{
    Q_OBJECT

public:
    explicit Timeline(QWidget *parent = nullptr);

    void setDuration(double seconds);
    void setPosition(double seconds);
    void setPictures(const PlannedPictures &pictures);
    /// The picture that is the nearest to the position, -1: none.
    int nearest() const { return m_nearest; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void seekWanted(double seconds);

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    double placeOf(double seconds) const;
    double secondsAt(double x) const;
    int pictureAt(const QPointF &point) const;
    QString tipAt(const QPointF &point) const;
    void updateNearest();
    void paintGroove(QPainter &painter) const;
    void paintMarks(QPainter &painter) const;
    void paintHandle(QPainter &painter) const;

    double m_duration = 0;
    double m_position = 0;
    PlannedPictures m_pictures;
    int m_nearest = -1;
    bool m_isDragging = false;
};

} // namespace vignar
