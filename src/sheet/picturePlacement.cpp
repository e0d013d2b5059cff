#include "sheet/picturePlacement.h"

#include "classShared/lineLog.h"

#include <QColorSpace>
#include <QPainter>

#include <algorithm>

namespace vignar
{

namespace
{

constexpr double defaultDpi = 72;
constexpr double metresPerInch = 0.0254;

/// A picture and where it goes in the target.
struct PlacedPiece {
    QImage picture;
    QPoint position;
};

QImage stretched(const QImage &source, const QSize &size)
{
    return source.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

/// A quotient cut to whole pixels, without losing one to an inexact division.
int wholePixels(double length)
{
    return std::max(1, static_cast<int>(length + 1e-6));
}

void logScale(double f, const QSize &source, const QSize &result)
{
    logVerbose(u"f=%f, src = %ld x %ld -> dst = %ld x %ld", f, source.width(), source.height(),
               result.width(), result.height());
}

PlacedPiece filling(const QImage &source, const QSize &target)
{
    logScale(double(source.width()) / target.width(), source.size(), target);
    return {stretched(source, target), {}};
}

PlacedPiece fitted(const QImage &source, const QSize &target)
{
    const double f = std::max(double(source.width()) / target.width(),
                              double(source.height()) / target.height());
    const QSize size(wholePixels(source.width() / f), wholePixels(source.height() / f));
    const QPoint position((target.width() - size.width()) / 2,
                          (target.height() - size.height()) / 2);
    logScale(f, source.size(), size);
    logLine(u"%ld:%ld:%ld:%ld", position.x(), position.y(), size.width(), size.height());
    return {stretched(source, size), position};
}

/// Cuts the overflow off before scaling, so that an extreme shape needs no extreme
/// amount of memory.
PlacedPiece covering(const QImage &source, const QSize &target)
{
    const double f = std::min(double(source.width()) / target.width(),
                              double(source.height()) / target.height());
    const QSize scaled(wholePixels(source.width() / f), wholePixels(source.height() / f));
    logScale(f, source.size(), scaled);
    QRect visible({}, QSize(wholePixels(target.width() * f), wholePixels(target.height() * f)));
    visible.moveTo((source.width() - visible.width()) / 2,
                   (source.height() - visible.height()) / 2);
    logLine(u"dstOffset=%.0f:%.0f (dst=%ld*%ld) -> srcOffset=%ld:%ld (src=%ld*%ld)",
            (scaled.width() - target.width()) / 2.0, (scaled.height() - target.height()) / 2.0,
            target.width(), target.height(), visible.x(), visible.y(), source.width(),
            source.height());
    return {stretched(source.copy(visible), target), {}};
}

PlacedPiece placed(const QImage &source, const QSize &target, Placement placement)
{
    switch (placement) {
    case Placement::fit:
    case Placement::fitCentred:
        return fitted(source, target);
    case Placement::cover:
    case Placement::coverCentred:
        return covering(source, target);
    case Placement::stretch:
        break;
    }
    return filling(source, target);
}

} // namespace

QImage rescaled(const QImage &source, const QSize &size, double dpi, Placement placement,
                bool keepsTransparency)
{
    logVerbose(u"img size : %ld x %ld", source.width(), source.height());
    QImage target(size, QImage::Format_ARGB32_Premultiplied);
    if (target.isNull() || source.isNull())
        return {};
    target.fill(keepsTransparency ? Qt::transparent : Qt::black);
    const PlacedPiece piece = placed(source, size, placement);
    QPainter(&target).drawImage(piece.position, piece.picture);
    target.setColorSpace(QColorSpace::SRgb);
    setDpi(target, dpi);
    return target;
}

void setDpi(QImage &image, double dpi)
{
    const int dotsPerMeter = qRound((dpi > 0 ? dpi : defaultDpi) / metresPerInch);
    image.setDotsPerMeterX(dotsPerMeter);
    image.setDotsPerMeterY(dotsPerMeter);
}

} // namespace vignar
