#pragma once

#include <QImage>
#include <QStringList>

namespace vignar
{

/// The pictures of a sheet, read from their files one at a time.
class SheetPictures
{
public:
    /// Paths in index order.
    explicit SheetPictures(QStringList paths) : m_paths(std::move(paths)) {}
    virtual ~SheetPictures() = default;

    int count() const { return static_cast<int>(m_paths.size()); }
    /// Its name in the extraction folder tells which thumbnail of the plan a picture is.
    QString path(int position) const { return m_paths.value(position); }

    /// The picture of a cell, to be drawn at a size in pixels; null when it does not load.
    virtual QImage cell(int position, const QSize &size) const;
    /// The picture whose file is the heaviest of the middle ones, cut to the shape of the
    /// box; null without pictures.
    virtual QImage large(const QSize &box) const;

private:
    QStringList m_paths;
};

} // namespace vignar
