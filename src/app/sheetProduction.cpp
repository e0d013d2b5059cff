#include "app/sheetProduction.h"

#include "settings/stringTables.h"
#include "sheet/diskPicture.h"
#include "sheet/extractionFolder.h"
#include "sheet/extractionPasses.h"
#include "sheet/thumbnailPlan.h"

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

Dico timecodesOfPictures(const SheetProduction &production)
{
    Dico timecodes = read(production.display, Keys::timecode).value_or(Dico());
    // Hundredths are cut off, and a time that was told comes out of two roundings.
    constexpr double rounding = 0.001;
    const auto show = [&timecodes](int index, double seconds) {
        timecodes.insert(QString::number(index), timecodeText(seconds + rounding));
    };
    const QHash<QString, double> &shownAt = production.shownAt;
    for (int index = 0; index < production.planned; ++index) {
        const QString picture = thumbnailPath(production.pictureFolder, index);
        if (shownAt.contains(picture))
            show(index, shownAt.value(picture));
    }
    for (const auto &[index, instant] : production.retakes.replaced())
        show(index, shownAt.value(production.retakes.furtherPath(index), instant));
    return timecodes;
}

Dico displayOf(const SheetProduction &production, const QStringList &pictures)
{
    Dico display = production.display;
    write(display, Keys::th, pictures);
    if (contains(display, Keys::timecode))
        write(display, Keys::timecode, timecodesOfPictures(production));
    return display;
}

Result<void> makePreview(const SheetProduction &production, const QStringList &pictures)
{
    SeekPreview preview = *production.preview;
    preview.pictures = pictures;
    preview.pictureSize = {read(production.display, Keys::wTh).value_or(0),
                           read(production.display, Keys::hTh).value_or(0)};
    return writeSeekPreview(preview);
}

} // namespace

BlankCheck checkBlanks(BlankRetakes retakes, const SourceDico &source)
{
    Dico passes = retakes.nextRound(source);
    return {std::move(retakes), std::move(passes)};
}

SheetProduct produceSheet(const SheetProduction &production,
                          const std::function<bool()> &isStopWanted)
{
    SheetProduct product;
    const auto mayGoOn = [&product, &isStopWanted] {
        product.isStopped = product.isStopped || (isStopWanted && isStopWanted());
        return !product.isStopped;
    };
    const QStringList pictures = extractedPictures(production.pictureFolder);
    product.thumbnails = static_cast<int>(pictures.size());
    if (pictures.isEmpty()) {
        product.sheet = Failure{localised(u"V_reason_noThumbnail"_s)};
        return product;
    }
    for (const QString &picture : pictures) {
        if (production.matrix)
            noteMatrix(picture, *production.matrix);
    }
    if (mayGoOn())
        product.sheet = composeSheet(displayOf(production, pictures), production.format, mayGoOn);
    if (product.isStopped || !product.sheet)
        return product;
    product.isDiskPictureMade =
        !production.diskPicture.isNull() &&
        multimediaDiskThumb(production.pictureFolder, production.diskPicture);
    if (production.preview) {
        const Result<void> preview = makePreview(production, pictures);
        product.isPreviewMade = bool(preview);
        product.previewFault = preview.reason();
    }
    return product;
}

} // namespace vignar
