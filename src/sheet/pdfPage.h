#pragma once

#include "classShared/wholeFile.h"

#include <QSize>
#include <QString>

#include <functional>

class QPainter;

namespace vignar
{

/// A page measured in pixels.
struct PdfPage {
    QSize size;
    /// Pixels per inch: the page is size × 72 / dpi points, rounded up to whole ones.
    double dpi = 72;
    /// Document title; may be empty.
    QString title;
    /// Asked once the page is drawn; no leaves what was there before.
    std::function<bool()> mayWrite = {};
};

/// Has a document of one page written that is drawn in its pixels. False leaves what was
/// there before.
bool writePdfPage(const QString &path, const PdfPage &page,
                  const std::function<void(QPainter &)> &draw, const FileWriter &write = writeOver);

} // namespace vignar
