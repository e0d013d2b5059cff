#include "sheet/sheetPictures.h"

#include "sheet/imageExport.h"
#include "sheet/picturePlacement.h"
#include "sheet/richPictures.h"

namespace vignar
{

QImage SheetPictures::cell(int position, const QSize &size) const
{
    return loadedPicture(path(position), size);
}

QImage SheetPictures::large(const QSize &box) const
{
    const std::vector<int> records = recordWeights(loggedWeights(m_paths));
    if (records.empty())
        return {};
    const QImage picture = loadedPicture(path(records.back()));
    return picture.isNull() ? picture : rescaled(picture, box, 0, Placement::cover, false);
}

} // namespace vignar
