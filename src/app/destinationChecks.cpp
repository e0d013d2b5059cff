#include "app/destinationChecks.h"

#include "app/sheetDisplay.h"
#include "classShared/files.h"
#include "classShared/lineLog.h"
#include "classShared/sizes.h"
#include "settings/alerts.h"
#include "settings/applicationPlaces.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "sheet/ownMark.h"

#include <QFileInfo>

#include <algorithm>
#include <optional>

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

struct Space {
    double necessary = spaceFactor * encDstPoidsEstimatif();
    qint64 free = -1;

    explicit Space(const QString &folder) : free(freeDiskSpaceMo(folder)) {}
    bool isEnough() const { return free < 0 || free >= necessary; }
};

/// What the user has said to hold for all files that are in the way.
std::optional<bool> settledReplacement()
{
    const auto earlier = prefStored(RunKeys::replaceFilesCheck);
    return earlier ? std::optional(*earlier == 1) : std::nullopt;
}

/// A file in the way.
struct FoundFile {
    QString path;
    FileIdentity file;
};

/// Those of the files that exist; a folder cannot be replaced and is left out.
QList<FoundFile> found(const QStringList &paths)
{
    QList<FoundFile> files;
    for (const QString &path : paths) {
        const auto file = fileIdentity(path);
        if (file && file->kind != FileIdentity::Kind::folder)
            files.append({path, *file});
    }
    return files;
}

enum class Answer { keep, replaceOwn, replaceAll };

QString namesOf(const QList<FoundFile> &files)
{
    QStringList names;
    for (const FoundFile &file : files)
        names.append(QFileInfo(file.path).fileName());
    return names.join(u", "_s);
}

/// Names all that the answer covers, and says what of it is not ours.
QString questionText(const QList<FoundFile> &files)
{
    QString text = filled(localised(u"D_go_dossier_destination4Bis"_s), files.first().path);
    if (files.size() > 1)
        text += u' ' + filled(localised(u"V_replace_also"_s), namesOf(files.mid(1)));
    QList<FoundFile> others = files;
    others.removeIf([](const FoundFile &file) { return bearsOurMark(file.path); });
    if (!others.isEmpty())
        text += u' ' + filled(localised(u"V_replace_notOurs"_s), namesOf(others));
    return text;
}

AlertAnswer ask(const QList<FoundFile> &files, bool isOneOfSeveral)
{
    const QString title = QFileInfo(files.first().path).fileName();
    const QString text = questionText(files);
    const QString keep = localised(u"D_keep"_s);
    const QString replace = localised(u"D_replace"_s);
    if (!isOneOfSeveral)
        return {alertTimed(title, text, keep, replace, {}, AlertStyle::warning, questionSeconds),
                false};
    return alertTimedSuppressible(title, text, keep, replace, localised(u"D_applyToAll"_s),
                                  AlertStyle::warning, questionSeconds);
}

Answer settledAnswer(bool isReplaced)
{
    logLine(u"pre-choix user      : yes");
    return isReplaced ? Answer::replaceOwn : Answer::keep;
}

Answer answerAbout(const QList<FoundFile> &files, bool isOneOfSeveral)
{
    if (const auto settled = settledReplacement())
        return settledAnswer(*settled);
    const AlertAnswer answer = ask(files, isOneOfSeveral);
    // The program of a worker may have had an answer for all that the worker did not know.
    if (const auto settled = settledReplacement())
        return settledAnswer(*settled);
    const bool isReplaced = answer.button == AlertButton::second;
    if (answer.isSuppressed && answer.button != AlertButton::timeout)
        prefWrite(RunKeys::replaceFilesCheck, isReplaced ? 1 : 0);
    return isReplaced ? Answer::replaceAll : Answer::keep;
}

Agreements agreements(const QList<FoundFile> &files, Answer answer)
{
    Agreements agreed;
    for (const FoundFile &found : files) {
        if (answer == Answer::replaceAll ||
            (answer == Answer::replaceOwn && bearsOurMark(found.path)))
            agreed.insert(found.path, found.file);
    }
    return agreed;
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
    const Space space(folder);
    logLine(u"free necessary space: %.1f vs %ld (MB)", space.necessary, space.free);
    if (space.isEnough())
        return {};
    alertTimed(localised(u"D_go_echec_disque1"_s), localised(u"D_go_echec_disque2"_s), {}, {}, {},
               AlertStyle::critical, questionSeconds);
    return Failure{filled(localised(u"V_reason_diskFull"_s), folder)};
}

QStringList sideFiles(const SheetTarget &target)
{
    QStringList files;
    if (isDiskPictureWanted())
        files += target.diskPicturePath;
    if (prefValue(Prefs::prefWebVtt))
        files += {target.vttFile(), target.spriteFile()};
    return files;
}

Agreements ownFiles(const QStringList &paths)
{
    return agreements(found(paths), Answer::replaceOwn);
}

Result<PlacesSettled> settlePlaces(const SheetTarget &target, SheetFormat format,
                                   bool isOneOfSeveral)
{
    const QString sheet = target.sheetFile(format);
    PlacesSettled places;
    if (const auto old = fileIdentity(sheet)) {
        if (old->kind == FileIdentity::Kind::folder)
            return Failure{filled(localised(u"V_reason_folderInPlace"_s), sheet)};
        const QList<FoundFile> files = found(QStringList{sheet} + sideFiles(target));
        const Answer answer = answerAbout(files, isOneOfSeveral);
        places.agreed = agreements(files, answer);
        if (!places.agreed.contains(sheet))
            places.sheet = answer == Answer::keep ? PlacesSettled::Sheet::keep
                                                  : PlacesSettled::Sheet::elsewhere;
        return places;
    }
    const QStringList wanted = sideFiles(target);
    for (const QStringList &group :
         {QStringList{target.diskPicturePath}, {target.vttFile(), target.spriteFile()}}) {
        if (!wanted.contains(group.first()))
            continue;
        const QList<FoundFile> files = found(group);
        if (!files.isEmpty())
            places.agreed.insert(agreements(files, answerAbout(files, isOneOfSeveral)));
    }
    return places;
}

bool isMadeWithoutAsking(const SheetTarget &target, SheetFormat format)
{
    const QString folder = QFileInfo(target.dstPath).path();
    if (!isWritableFolder(folder) || !Space(folder).isEnough())
        return false;
    const auto settled = settledReplacement();
    const QString sheet = target.sheetFile(format);
    if (fileIdentity(sheet))
        return settled == true && bearsOurMark(sheet);
    const QStringList beside = sideFiles(target);
    return settled.has_value() || std::ranges::none_of(beside, [](const QString &file) {
               return fileIdentity(file).has_value();
           });
}

} // namespace vignar
