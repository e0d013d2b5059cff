#include "app/destinationChecks.h"

#include "app/outlets.h"
#include "app/sheetDisplay.h"
#include "classShared/files.h"
#include "classShared/lineLog.h"
#include "classShared/sizes.h"
#include "settings/alerts.h"
#include "settings/applicationPlaces.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"

#include <QFileInfo>

#include <algorithm>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// Room asked for on the destination's volume, in parts of the estimated weight.
constexpr double spaceFactor = 2.1;
/// How long the replace question and the notice of a full disk wait.
constexpr int questionSeconds = 10;

bool isWritableFolder(const QString &folder)
{
    return QFileInfo(folder).isDir() && QFileInfo(folder).isWritable();
}

bool hasRoom(const QString &folder)
{
    const double necessary = spaceFactor * encDstPoidsEstimatif();
    const qint64 free = freeDiskSpaceMo(folder);
    logLine(u"free necessary space: %.1f vs %ld (MB)", necessary, free);
    return free < 0 || free >= necessary;
}

/// What the user has said to hold for all files that are in the way.
std::optional<bool> settledReplacement()
{
    const auto earlier = prefStored(RunKeys::replaceFilesCheck);
    return earlier ? std::optional(*earlier == 1) : std::nullopt;
}

void askToReplacePreview(const SheetTarget &target, bool isOneOfSeveral, SheetOutcome &outcome)
{
    for (const QString &path : {target.vttFile(), target.spriteFile()}) {
        if (!QFileInfo::exists(path))
            continue;
        // One answer for both: cues that belong to another sprite would show nonsense.
        if (!mayReplace(path, isOneOfSeveral))
            outcome.previewNote = filled(localised(u"V_reason_previewKept"_s), path);
        return;
    }
}

/// The files beside the sheet that the preferences ask for.
QStringList sideFiles(const SheetTarget &target)
{
    QStringList files;
    if (isDiskPictureWanted())
        files += target.diskPicturePath;
    if (prefValue(Prefs::prefWebVtt))
        files += {target.vttFile(), target.spriteFile()};
    return files;
}

} // namespace

Result<void> preparedDestination(const QString &folder)
{
    const bool isOurFolder = QFileInfo(folder).fileName() == bundleName;
    if (!QFileInfo(folder).isDir() && isOurFolder)
        mkdir(folder);
    if (isWritableFolder(folder))
        return {};
    return Failure{filled(localised(u"V_reason_destination"_s), folder)};
}

Result<void> checkedSpace(const QString &folder)
{
    if (hasRoom(folder))
        return {};
    alertTimed(localised(u"D_go_echec_disque1"_s), localised(u"D_go_echec_disque2"_s), {}, {}, {},
               AlertStyle::critical, questionSeconds);
    return Failure{filled(localised(u"V_reason_diskFull"_s), folder)};
}

bool mayReplace(const QString &path, bool isOneOfSeveral)
{
    if (const auto settled = settledReplacement()) {
        logLine(u"pre-choix user      : yes");
        return *settled;
    }
    const QString title = QFileInfo(path).fileName();
    const QString text = filled(localised(u"D_go_dossier_destination4Bis"_s), path);
    const QString keep = localised(u"D_keep"_s);
    const QString replace = localised(u"D_replace"_s);
    if (!isOneOfSeveral)
        return alertTimed(title, text, keep, replace, {}, AlertStyle::warning, questionSeconds) ==
               AlertButton::second;
    const AlertAnswer answer =
        alertTimedSuppressible(title, text, keep, replace, localised(u"D_applyToAll"_s),
                               AlertStyle::warning, questionSeconds);
    const bool isReplaced = answer.button == AlertButton::second;
    if (answer.isSuppressed)
        prefWrite(RunKeys::replaceFilesCheck, isReplaced ? 1 : 0);
    return isReplaced;
}

Result<void> askedToReplace(const SheetTarget &target, bool isOneOfSeveral, SheetOutcome &outcome)
{
    const QString sheet = target.sheetFile(outcome.format);
    const bool isSheetThere = QFileInfo::exists(sheet);
    if (isSheetThere && !mayReplace(sheet, isOneOfSeveral)) {
        outcome.status = SheetOutcome::Status::kept;
        outcome.sheet = sheet;
        return Failure{localised(u"V_reason_kept"_s)};
    }
    outcome.isDiskPictureKept = isDiskPictureWanted() &&
                                QFileInfo::exists(target.diskPicturePath) &&
                                !mayReplace(target.diskPicturePath, isOneOfSeveral);
    if (prefValue(Prefs::prefWebVtt) && !isSheetThere)
        askToReplacePreview(target, isOneOfSeveral, outcome);
    return {};
}

bool isMadeWithoutAsking(const SheetTarget &target, SheetFormat format)
{
    const QString folder = QFileInfo(target.dstPath).path();
    if (!isWritableFolder(folder) || !hasRoom(folder))
        return false;
    const auto settled = settledReplacement();
    if (QFileInfo::exists(target.sheetFile(format)))
        return settled == true;
    const QStringList beside = sideFiles(target);
    return settled.has_value() || std::ranges::none_of(beside, [](const QString &file) {
               return QFileInfo::exists(file);
           });
}

} // namespace vignar
