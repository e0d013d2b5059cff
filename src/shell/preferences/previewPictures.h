#pragma once

#include "sheet/sheetPictures.h"

#include <QHash>

namespace vignar
{

/// The pictures of a sheet that only shows how it will look: finished thumbnails, or a
/// poster in every cell, or drawn samples. Keeps what it has drawn, at the size in which
/// it was last asked for.
class PreviewPictures : public SheetPictures
{
public:
    /// Finished thumbnails.
    explicit PreviewPictures(const QStringList &paths);
    /// As many cells; a null poster gives the samples.
    PreviewPictures(int count, const QImage &poster);

    /// Pixels drawn for one unit of the sheet.
    void setScale(double scale) { m_scale = scale; }

    QImage cell(int position, const QSize &size) const override;
    QImage large(const QSize &box) const override;

private:
    QImage made(int position, const QSize &size) const;
    QImage madeLarge(const QSize &size) const;
    QSize scaled(const QSize &size) const;

    bool m_isFinished;
    QImage m_poster;
    double m_scale = 1;
    /// By position; the large picture is at -1.
    mutable QHash<int, QImage> m_made;
};

} // namespace vignar
