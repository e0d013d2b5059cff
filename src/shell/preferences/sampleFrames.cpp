#include "shell/preferences/sampleFrames.h"

#include "shell/colours.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include <array>
#include <cmath>
#include <numbers>

namespace vignar
{

namespace
{

/// The light at one hour of the day.
struct Light {
    QColor zenith;
    QColor horizon;
    QColor ground;
};

constexpr std::array<Light, 4> lights{{
    {QColor(0x8f, 0xa8, 0xd0), QColor(0xf6, 0xd3, 0xb0), QColor(0x4d, 0x62, 0x5c)},
    {QColor(0x3f, 0x86, 0xc9), QColor(0xcf, 0xe6, 0xf2), QColor(0x3d, 0x74, 0x55)},
    {QColor(0x6a, 0x4c, 0x8c), QColor(0xf2, 0x92, 0x5a), QColor(0x4a, 0x3b, 0x4f)},
    {QColor(0x0f, 0x17, 0x33), QColor(0x32, 0x3f, 0x6b), QColor(0x10, 0x18, 0x28)},
}};

Light lightAt(double day)
{
    const double position = std::clamp(day, 0.0, 1.0) * (lights.size() - 1);
    const auto before = std::min(static_cast<size_t>(position), lights.size() - 2);
    const double share = position - double(before);
    const Light &one = lights[before];
    const Light &other = lights[before + 1];
    return {mixed(one.zenith, other.zenith, share), mixed(one.horizon, other.horizon, share),
            mixed(one.ground, other.ground, share)};
}

/// Draws in a frame of which width and height are 1.
class Scene
{
public:
    Scene(QPainter &painter, double day, int shot)
        : m_painter(painter), m_light(lightAt(day)), m_day(day), m_shot(shot)
    {
        m_painter.setPen(Qt::NoPen);
    }

    void draw()
    {
        drawSky();
        switch (m_shot % 3) {
        case 0:
            drawHills();
            break;
        case 1:
            drawSea();
            break;
        default:
            drawTown();
        }
    }

private:
    void drawSky()
    {
        QLinearGradient sky(0, 0, 0, 0.75);
        sky.setColorAt(0, m_light.zenith);
        sky.setColorAt(1, m_light.horizon);
        m_painter.fillRect(QRectF(0, 0, 1, 1), sky);
        // The sun's way over the day, the same in every shot.
        const double height = std::sin(std::numbers::pi * m_day);
        m_painter.setBrush(mixed(m_light.horizon, Qt::white, 0.65));
        m_painter.drawEllipse(QPointF(0.12 + 0.76 * m_day, 0.58 - 0.42 * height), 0.045, 0.08);
    }

    void drawRidge(double level, double swing, double phase, const QColor &colour)
    {
        QPainterPath ridge(QPointF(0, 1));
        for (int step = 0; step <= 24; ++step) {
            const double x = step / 24.0;
            const double wave = std::sin(5 * x + phase) + 0.4 * std::sin(13 * x + 2 * phase);
            ridge.lineTo(x, level - swing * wave);
        }
        ridge.lineTo(1, 1);
        m_painter.fillPath(ridge, colour);
    }

    void drawHills()
    {
        drawRidge(0.60, 0.08, m_shot, mixed(m_light.ground, m_light.horizon, 0.55));
        drawRidge(0.74, 0.06, 2 + 1.3 * m_shot, mixed(m_light.ground, m_light.horizon, 0.25));
        drawRidge(0.88, 0.04, 4 + 1.7 * m_shot, m_light.ground);
    }

    void drawSea()
    {
        QLinearGradient water(0, 0.6, 0, 1);
        water.setColorAt(0, mixed(m_light.zenith, m_light.horizon, 0.6));
        water.setColorAt(1, mixed(m_light.zenith, m_light.ground, 0.5));
        m_painter.fillRect(QRectF(0, 0.6, 1, 0.4), water);
        const double x = 0.25 + 0.5 * std::fmod(0.37 * m_shot, 1.0);
        m_painter.setBrush(mixed(m_light.ground, Qt::black, 0.3));
        m_painter.drawPolygon(
            QPolygonF{{x - 0.08, 0.69}, {x + 0.08, 0.69}, {x + 0.05, 0.75}, {x - 0.06, 0.75}});
        m_painter.setBrush(mixed(m_light.horizon, Qt::white, 0.5));
        m_painter.drawPolygon(QPolygonF{{x, 0.40}, {x, 0.67}, {x + 0.075, 0.67}});
        m_painter.drawPolygon(QPolygonF{{x - 0.01, 0.45}, {x - 0.01, 0.67}, {x - 0.06, 0.67}});
    }

    void drawTown()
    {
        drawRidge(0.66, 0.05, m_shot, mixed(m_light.ground, m_light.horizon, 0.5));
        const QColor walls = mixed(m_light.ground, Qt::black, 0.2);
        const QColor windows = mixed(QColor(0xff, 0xd8, 0x7a), walls, 0.2 + 0.5 * (1 - m_day));
        for (int house = 0; house < 7; ++house) {
            const double left = house / 7.0;
            const double top = 0.55 + 0.17 * std::sin(2.1 * house + m_shot);
            m_painter.fillRect(QRectF(left, top, 0.125, 1 - top), walls);
            for (int storey = 0; storey < 3; ++storey)
                m_painter.fillRect(QRectF(left + 0.03 + 0.035 * (storey % 2),
                                          top + 0.05 + 0.1 * storey, 0.025, 0.045),
                                   windows);
        }
    }

    QPainter &m_painter;
    Light m_light;
    double m_day;
    int m_shot;
};

} // namespace

QImage sampleFrame(int index, int count, const QSize &size)
{
    QImage frame(size, QImage::Format_RGB32);
    frame.fill(Qt::black);
    QPainter painter(&frame);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size.width(), size.height());
    Scene(painter, count > 1 ? double(index) / (count - 1) : 0.5, index).draw();
    return frame;
}

} // namespace vignar
