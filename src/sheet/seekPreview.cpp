#include "sheet/seekPreview.h"

#include "classShared/format.h"
#include "settings/stringTables.h"
#include "sheet/extractionPasses.h"
#include "sheet/imageExport.h"
#include "sheet/ownMark.h"

#include <QFileInfo>
#include <QPainter>
#include <QUrl>

#include <algorithm>
#include <cmath>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// The side of a square that a small picture fits in: what players show above a finger.
constexpr int tileSide = 160;
constexpr int columns = 10;
constexpr int spriteQuality = 85;

qint64 milliseconds(double seconds)
{
    return std::llround(seconds * 1000);
}

QString cueTime(qint64 all)
{
    return QString::asprintf("%02lld:%02lld:%02lld.%03lld", all / 3600000, all / 60000 % 60,
                             all / 1000 % 60, all % 1000);
}

struct Sprite {
    QImage picture;
    std::vector<PreviewTile> tiles;
};

Sprite spriteOf(const SeekPreview &preview)
{
    const int count = static_cast<int>(preview.pictures.size());
    const QSize tile =
        preview.pictureSize.scaled(tileSide, tileSide, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
    const int rows = (count + columns - 1) / columns;
    Sprite sprite{
        QImage(std::min(count, columns) * tile.width(), rows * tile.height(), QImage::Format_RGB32),
        {}};
    sprite.picture.fill(Qt::black);
    QPainter painter(&sprite.picture);
    for (const QString &path : preview.pictures) {
        const int index = thumbnailIndex(path);
        const QImage picture = loadedPicture(path, tile);
        if (picture.isNull() || index < 0 || size_t(index) >= preview.instants.size())
            continue;
        const int position = static_cast<int>(sprite.tiles.size());
        const QRect place(
            QPoint(position % columns * tile.width(), position / columns * tile.height()), tile);
        painter.drawImage(place, picture);
        sprite.tiles.push_back({preview.instants[size_t(index)], place});
    }
    return sprite;
}

} // namespace

QString previewCues(const QString &spriteName, const std::vector<PreviewTile> &tiles,
                    double duration)
{
    const QString address = QString::fromLatin1(QUrl::toPercentEncoding(spriteName));
    QString text = QString::fromLatin1(webVttStart) + softwareName() + u'\n';
    qint64 start = 0;
    for (size_t at = 0; at < tiles.size(); ++at) {
        const bool isLast = at + 1 == tiles.size();
        qint64 end = milliseconds(isLast ? duration : tiles[at + 1].start);
        // A duration that is too short, or unknown, must not cost the last picture.
        if (isLast && end <= start)
            end = start + 1000;
        if (end <= start)
            continue;
        const QRect &place = tiles[at].place;
        text += u"\n%1 --> %2\n%3#xywh=%4,%5,%6,%7\n"_s.arg(cueTime(start), cueTime(end), address)
                    .arg(place.x())
                    .arg(place.y())
                    .arg(place.width())
                    .arg(place.height());
        start = end;
    }
    return text;
}

Result<void> writeSeekPreview(const SeekPreview &preview, const FileWriter &write)
{
    const auto failure = [](const QString &path) {
        return Failure{filled(localised(u"V_reason_writePreview"_s), path)};
    };
    const Sprite sprite = spriteOf(preview);
    if (sprite.tiles.empty() || !writePicture(sprite.picture, preview.spritePath, jpegFormat,
                                              spriteQuality, signedMetadata, write))
        return failure(preview.spritePath);
    const QString name = QFileInfo(preview.spritePath).fileName();
    const QString cues = previewCues(name, sprite.tiles, preview.duration);
    if (!write(preview.vttPath, cues.toUtf8()))
        return failure(preview.vttPath);
    return {};
}

} // namespace vignar
