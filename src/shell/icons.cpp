#include "shell/icons.h"

#include "settings/applicationPlaces.h"

#include <QFile>
#include <QGuiApplication>
#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

QColor colourOf(QIcon::Mode mode)
{
    const QPalette palette = QGuiApplication::palette();
    switch (mode) {
    case QIcon::Disabled:
        return palette.color(QPalette::Disabled, QPalette::WindowText);
    case QIcon::Selected:
        return palette.color(QPalette::HighlightedText);
    default:
        return palette.color(QPalette::WindowText);
    }
}

class PaintedIconEngine : public QIconEngine
{
public:
    explicit PaintedIconEngine(IconPainter painter) : m_painter(std::move(painter)) {}

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        m_painter(*painter, rect, colourOf(mode));
    }
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap drawn(size);
        drawn.fill(Qt::transparent);
        QPainter painter(&drawn);
        paint(&painter, drawn.rect(), mode, state);
        return drawn;
    }
    QIconEngine *clone() const override { return new PaintedIconEngine(m_painter); }

private:
    IconPainter m_painter;
};

QString iconPath(const QString &name)
{
    return applicationPlaces().resourceFolder() + u"/icons/"_s + name + u".svg"_s;
}

const QByteArray &drawing(const QString &name)
{
    static QHash<QString, QByteArray> read;
    auto found = read.find(name);
    if (found == read.end()) {
        QFile file(iconPath(name));
        found = read.insert(name, file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray());
    }
    return *found;
}

} // namespace

QIcon paintedIcon(IconPainter painter)
{
    return QIcon(new PaintedIconEngine(std::move(painter)));
}

QIcon themedIcon(const QString &name)
{
    return QIcon::hasThemeIcon(name) ? QIcon::fromTheme(name) : ownIcon(name);
}

QIcon ownIcon(const QString &name)
{
    return paintedIcon([name](QPainter &painter, const QRectF &place, const QColor &colour) {
        drawOwnIcon(painter, place, name, colour);
    });
}

void drawOwnIcon(QPainter &painter, const QRectF &place, const QString &name, const QColor &colour)
{
    QByteArray coloured = drawing(name);
    coloured.replace("currentColor", colour.name().toLatin1());
    QSvgRenderer(coloured).render(&painter, place);
}

QIcon applicationIcon()
{
    const QString name = QString(bundleIdentifier);
    return QIcon::hasThemeIcon(name) ? QIcon::fromTheme(name) : QIcon(iconPath(name));
}

} // namespace vignar
