#include "shell/preferences/previewPictures.h"

#include "sheet/extractionPasses.h"
#include "shell/preferences/sampleFrames.h"

#include <cmath>

namespace vignar
{

namespace
{

constexpr int largePosition = -1;

/// Where the drawn film shows most, for the large picture, of which only the middle is seen.
constexpr double sampleMoment = 0.25;
constexpr QSize sampleShape(16, 9);

/// Names as in an extraction folder, by which the timecodes find their pictures.
QStringList placeholders(int count)
{
    QStringList paths;
    for (int index = 0; index < count; ++index)
        paths.append(thumbnailPath({}, index));
    return paths;
}

/// The middle of a picture in the shape of a box.
QImage covering(const QImage &picture, const QSize &size)
{
    const QImage grown =
        picture.scaled(size, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
    return grown.copy((grown.width() - size.width()) / 2, (grown.height() - size.height()) / 2,
                      size.width(), size.height());
}

} // namespace

PreviewPictures::PreviewPictures(const QStringList &paths)
    : SheetPictures(paths), m_isFinished(true)
{
}

PreviewPictures::PreviewPictures(int count, const QImage &poster)
    : SheetPictures(placeholders(count)), m_isFinished(false), m_poster(poster)
{
}

QSize PreviewPictures::scaled(const QSize &size) const
{
    return QSize(int(std::ceil(size.width() * m_scale)), int(std::ceil(size.height() * m_scale)))
        .expandedTo({1, 1});
}

QImage PreviewPictures::cell(int position, const QSize &size) const
{
    const QSize wanted = scaled(size);
    QImage &kept = m_made[position];
    if (kept.size() != wanted)
        kept = made(position, wanted);
    return kept;
}

QImage PreviewPictures::large(const QSize &box) const
{
    const QSize wanted = scaled(box);
    QImage &kept = m_made[largePosition];
    if (kept.size() != wanted)
        kept = madeLarge(wanted);
    return kept;
}

QImage PreviewPictures::made(int position, const QSize &size) const
{
    if (m_isFinished)
        return SheetPictures::cell(position, size);
    if (m_poster.isNull())
        return sampleFrame(position, count(), size);
    return m_poster.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

QImage PreviewPictures::madeLarge(const QSize &size) const
{
    if (m_isFinished)
        return SheetPictures::large(size);
    if (m_poster.isNull())
        return covering(sampleFrame(int(sampleMoment * 100), 100,
                                    sampleShape.scaled(size, Qt::KeepAspectRatioByExpanding)),
                        size);
    return covering(m_poster, size);
}

} // namespace vignar
