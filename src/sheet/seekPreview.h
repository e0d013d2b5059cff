#pragma once

#include "classShared/result.h"
#include "classShared/wholeFile.h"

#include <QRect>
#include <QStringList>

#include <vector>

namespace vignar
{

/// What web players show above their time bar: one picture that holds many small ones,
/// the sprite, and a WebVTT file that says which of them belongs to which time.
struct SeekPreview {
    /// Extracted pictures in index order; those that do not load are left out.
    QStringList pictures;
    /// Seconds of each thumbnail of the plan; the file name of a picture says which it is.
    std::vector<double> instants;
    /// Seconds.
    double duration = 0;
    /// Size of an extracted picture in pixels, its pixels square.
    QSize pictureSize;
    QString spritePath;
    QString vttPath;
};

/// One small picture: from which second on it stands, and where in the sprite.
struct PreviewTile {
    double start = 0;
    QRect place;
};

/// The WebVTT text, which says who has made it. The first tile stands from 0 on, each up to the
/// next one and the last up to the duration; a tile whose time is over at its start is left out.
QString previewCues(const QString &spriteName, const std::vector<PreviewTile> &tiles,
                    double duration);

/// Has both files written. The reason of a failure names the file; after a failure of the
/// sprite the other one is not begun.
Result<void> writeSeekPreview(const SeekPreview &preview, const FileWriter &write = writeOver);

} // namespace vignar
