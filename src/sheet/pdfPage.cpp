#include "sheet/pdfPage.h"

#include "classShared/lineLog.h"
#include "sheet/pictureMetadata.h"

#include <QBuffer>
#include <QMarginsF>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>

#include <cmath>

namespace vignar
{

namespace
{

constexpr double pointsPerInch = 72;

/// The library rounds pages to whole points. Rounding up keeps all of the drawing, and
/// whoever draws fills a little beyond the edge.
QPageSize pageSize(const PdfPage &page)
{
    const QSizeF points = QSizeF(page.size) * pointsPerInch / page.dpi;
    return QPageSize(QSizeF(std::ceil(points.width()), std::ceil(points.height())),
                     QPageSize::Point, {}, QPageSize::ExactMatch);
}

} // namespace

bool writePdfPage(const QString &path, const PdfPage &page,
                  const std::function<void(QPainter &)> &draw, const FileWriter &write)
{
    QBuffer document;
    document.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&document);
        writer.setTitle(page.title);
        writer.setCreator(softwareName());
        writer.setResolution(qRound(page.dpi));
        writer.setPageSize(pageSize(page));
        writer.setPageMargins(QMarginsF());
        QPainter painter;
        if (!painter.begin(&writer))
            return false;
        draw(painter);
    }
    if (page.mayWrite && !page.mayWrite())
        return false;
    const WriteEnd end = write(path, document.data());
    if (!end)
        logLine(u"pdf                 :-( '%@' %@", path, end.reason());
    return bool(end);
}

} // namespace vignar
