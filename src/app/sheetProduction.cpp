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

/// Writes the files of a row under what was agreed to, and notes how that ended.
FileWriter rowWriter(const Agreements &agreed, QHash<QString, WriteEnd::State> &ends)
{
    return [&agreed, &ends](const QString &path, QByteArrayView content) {
        const auto file = agreed.constFind(path);
        const WriteEnd end =
            writeWhole(path, content, file == agreed.cend() ? std::nullopt : std::optional(*file));
        ends.insert(path, end.state());
        return end;
    };
}

bool isTaken(const QString &path, const Agreements &agreed)
{
    const auto found = fileIdentity(path);
    const auto file = agreed.constFind(path);
    return found && (file == agreed.cend() || *file != *found);
}

void makePreview(const SheetProduction &production, const QStringList &pictures,
                 SheetProduct &product)
{
    SeekPreview preview = *production.preview;
    // Cues that belong to another sprite would show nonsense: both files or none.
    for (const QString &path : {preview.vttPath, preview.spritePath}) {
        if (isTaken(path, production.agreed)) {
            product.ends.insert(path, WriteEnd::State::taken);
            return;
        }
    }
    preview.pictures = pictures;
    preview.pictureSize = {read(production.display, Keys::wTh).value_or(0),
                           read(production.display, Keys::hTh).value_or(0)};
    // The ends say what came of it.
    (void)writeSeekPreview(preview, rowWriter(production.agreed, product.ends));
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
    const FileWriter write = rowWriter(production.agreed, product.ends);
    if (mayGoOn() && !production.isSheetKept)
        product.sheet =
            composeSheet(displayOf(production, pictures), production.format, mayGoOn, write);
    if (product.isStopped || !product.sheet)
        return product;
    if (!production.diskPicture.isNull())
        multimediaDiskThumb(production.pictureFolder, production.diskPicture, write);
    if (production.preview)
        makePreview(production, pictures, product);
    return product;
}

} // namespace vignar
