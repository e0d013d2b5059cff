#include "shell/player/timeline.h"

#include "classShared/format.h"
#include "settings/stringTables.h"
#include "shell/colours.h"

#include <QEvent>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr double handleRadius = 7;
constexpr double grooveHeight = 4;
constexpr double grooveMiddle = handleRadius + 4;
/// Of the marks below the groove.
constexpr double marksTop = grooveMiddle + handleRadius + 4;
constexpr double markHeight = 9;
constexpr double diamondRadius = 5.5;
constexpr double fullHeight = marksTop + markHeight + 4;
/// How near to a mark a click must be.
constexpr double reach = 6;

/// What the slider's value counts for screen readers: milliseconds.
int milliseconds(double seconds)
{
    return static_cast<int>(std::clamp(seconds * 1000, 0.0, 2e9));
}

} // namespace

QString clockText(double seconds)
{
    const auto hundredths = static_cast<qint64>(std::max(0.0, seconds) * 100 + 1e-6);
    const auto twoDigits = [](qint64 number) {
        return QString::number(number).rightJustified(2, u'0');
    };
    return u"%1:%2:%3.%4"_s.arg(QString::number(hundredths / 360000),
                                twoDigits(hundredths / 6000 % 60), twoDigits(hundredths / 100 % 60),
                                twoDigits(hundredths % 100));
}

Timeline::Timeline(QWidget *parent) : QSlider(Qt::Horizontal, parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize Timeline::sizeHint() const
{
    return {480, static_cast<int>(fullHeight)};
}

QSize Timeline::minimumSizeHint() const
{
    return {160, static_cast<int>(fullHeight)};
}

void Timeline::setDuration(double seconds)
{
    m_duration = seconds;
    setRange(0, milliseconds(seconds));
    setPosition(m_position);
}

void Timeline::setPosition(double seconds)
{
    m_position = seconds;
    setValue(milliseconds(seconds));
    setAccessibleDescription(clockText(seconds));
    updateNearest();
    update();
}

void Timeline::setPictures(const PlannedPictures &pictures)
{
    m_pictures = pictures;
    updateNearest();
    update();
}

void Timeline::updateNearest()
{
    m_nearest = nearestInstant(m_pictures.instants, m_position);
}

double Timeline::placeOf(double seconds) const
{
    const double length = width() - 2 * handleRadius;
    return handleRadius +
           (m_duration > 0 ? std::clamp(seconds / m_duration, 0.0, 1.0) * length : 0);
}

double Timeline::secondsAt(double x) const
{
    const double length = width() - 2 * handleRadius;
    return std::clamp((x - handleRadius) / length, 0.0, 1.0) * m_duration;
}

int Timeline::pictureAt(const QPointF &point) const
{
    if (point.y() < marksTop - 3)
        return -1;
    int found = -1;
    double distance = reach;
    for (int index = 0; index < static_cast<int>(m_pictures.instants.size()); ++index) {
        const double away = std::abs(placeOf(m_pictures.instant(index)) - point.x());
        if (away <= distance) {
            distance = away;
            found = index;
        }
    }
    return found;
}

QString Timeline::tipAt(const QPointF &point) const
{
    const int picture = pictureAt(point);
    if (picture < 0)
        return clockText(secondsAt(point.x()));
    const QString format = localised(m_pictures.chosen.contains(picture) ? u"V_player_chosen"_s
                                                                         : u"V_player_planned"_s);
    return filled(format, picture + 1, static_cast<int>(m_pictures.instants.size()),
                  clockText(m_pictures.instant(picture)));
}

bool Timeline::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        const auto *help = static_cast<QHelpEvent *>(event);
        QToolTip::showText(help->globalPos(), tipAt(help->pos()), this);
        return true;
    }
    return QSlider::event(event);
}

void Timeline::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintGroove(painter);
    paintMarks(painter);
    if (isEnabled())
        paintHandle(painter);
}

void Timeline::paintGroove(QPainter &painter) const
{
    const QColor window = palette().color(QPalette::Window);
    const QColor ink = palette().color(QPalette::WindowText);
    const double left = placeOf(0) - grooveHeight / 2;
    const double right = width() - handleRadius + grooveHeight / 2;
    const auto draw = [&](double to, const QColor &colour) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        painter.drawRoundedRect(
            QRectF(left, grooveMiddle - grooveHeight / 2, to - left, grooveHeight),
            grooveHeight / 2, grooveHeight / 2);
    };
    draw(right, mixed(window, ink, 0.28));
    if (isEnabled())
        draw(placeOf(m_position), palette().color(QPalette::Highlight));
}

void Timeline::paintMarks(QPainter &painter) const
{
    const QColor window = palette().color(QPalette::Window);
    const QColor ink = palette().color(QPalette::WindowText);
    const QColor accent = palette().color(QPalette::Highlight);
    for (int index = 0; index < static_cast<int>(m_pictures.instants.size()); ++index) {
        const double x = placeOf(m_pictures.instant(index));
        const bool isNearest = index == m_nearest && isEnabled();
        if (m_pictures.chosen.contains(index)) {
            const QPointF middle(x, marksTop + markHeight / 2);
            const double radius = diamondRadius;
            painter.setPen(isNearest ? QPen(ink, 1.5) : QPen(Qt::NoPen));
            painter.setBrush(accent);
            painter.drawPolygon(QPolygonF{middle + QPointF(0, -radius), middle + QPointF(radius, 0),
                                          middle + QPointF(0, radius),
                                          middle + QPointF(-radius, 0)});
        } else {
            painter.setPen(QPen(isNearest ? ink : mixed(window, ink, 0.5), isNearest ? 3 : 1.5,
                                Qt::SolidLine, Qt::RoundCap));
            painter.drawLine(QPointF(x, marksTop + 1), QPointF(x, marksTop + markHeight - 1));
        }
    }
}

void Timeline::paintHandle(QPainter &painter) const
{
    const QPointF middle(placeOf(m_position), grooveMiddle);
    if (hasFocus()) {
        QColor halo = palette().color(QPalette::Highlight);
        halo.setAlphaF(0.35F);
        painter.setPen(Qt::NoPen);
        painter.setBrush(halo);
        painter.drawEllipse(middle, handleRadius + 3.5, handleRadius + 3.5);
    }
    painter.setPen(QPen(palette().color(QPalette::Window), 1.5));
    painter.setBrush(palette().color(QPalette::Highlight));
    painter.drawEllipse(middle, handleRadius, handleRadius);
}

void Timeline::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const int picture = pictureAt(event->position());
    m_isDragging = picture < 0;
    Q_EMIT seekWanted(picture < 0 ? secondsAt(event->position().x()) : m_pictures.instant(picture));
}

void Timeline::mouseMoveEvent(QMouseEvent *event)
{
    if (m_isDragging)
        Q_EMIT seekWanted(secondsAt(event->position().x()));
    setCursor(pictureAt(event->position()) < 0 ? Qt::ArrowCursor : Qt::PointingHandCursor);
}

void Timeline::mouseReleaseEvent(QMouseEvent *)
{
    m_isDragging = false;
}

// The slider's own steps would move the value without the picture.
void Timeline::keyPressEvent(QKeyEvent *event)
{
    event->ignore();
}

void Timeline::wheelEvent(QWheelEvent *event)
{
    event->ignore();
}

} // namespace vignar
