#include "app/poster.h"

#include "classShared/format.h"
#include "classShared/numbers.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "sheet/extractionPasses.h"
#include "sheet/fastPasses.h"
#include "sheet/jpegReading.h"
#include "sheet/pictureMatrix.h"
#include "tasks/runLimits.h"
#include "tasks/waitedRun.h"
#include "tasks/workFolder.h"

#include <QDeadlineTimer>
#include <QFile>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int posterWidth = 160;
constexpr double defaultAspect = 1.77;
constexpr int highestPoster = 10 * posterWidth;

/// Many files state no display aspect: theirs is that of the stored picture.
double posterAspect(const SourceDico &source)
{
    if (const auto stated = read(source, Keys::v_dar, 0))
        return fractionStr2Float(*stated);
    const double width = read(source, Keys::v_width, 0).value_or(0);
    const double height = read(source, Keys::v_height, 0).value_or(0);
    return width > 0 && height > 0 ? width / height : defaultAspect;
}

int posterHeight(const SourceDico &source)
{
    const double height = posterWidth / posterAspect(source);
    return height < highestPoster ? std::max(2, qRound(height)) : highestPoster;
}

/// Puts the colours of a picture right; true when there is one.
bool finish(const SourceDico &source, const QString &path)
{
    if (!isWholeJpeg(path)) {
        QFile::remove(path);
        return false;
    }
    if (const auto matrix = foreignMatrix(source))
        convertToJpegMatrix(path, *matrix);
    return true;
}

/// The attempts at one poster, and what went wrong with the first that failed for a reason of
/// its own.
struct Attempts {
    QDeadlineTimer deadline{SourceBudget::poster};
    RunFault fault = RunFault::none;

    QString run(const QStringList &arguments)
    {
        using std::chrono::milliseconds;
        const milliseconds left(deadline.remainingTime());
        const RunAnswer answer = taskArrayRun(
            arguments, std::min<milliseconds>(SourceBudget::picture, left), pictureLimits(1));
        if (fault == RunFault::none)
            fault = answer.fault;
        return answer.text;
    }
};

/// Runs a pass; true when it has left its picture.
bool take(Attempts &attempts, const SourceDico &source, const QStringList &pass)
{
    attempts.run(pass);
    return finish(source, pass.constLast());
}

/// In its quick form first, as the pictures of a sheet.
bool takeIntra(Attempts &attempts, const SourceDico &source, const QStringList &pass)
{
    if (!prefValue(Prefs::prefPlainPasses)) {
        const IntraPlan plan = intraPlan({{0, pass}}, source, 1);
        if (!plan.without.empty())
            return false;
        for (const FastRun &quick : plan.runs) {
            const QString report = attempts.run(quick.arguments);
            if (!isOfItsTime(quick, 0, pass, report))
                QFile::remove(pass.constLast());
            else if (finish(source, pass.constLast()))
                return true;
        }
    }
    return take(attempts, source, pass);
}

/// Without any seek: a recording that was interrupted before its index was written cannot
/// be sought to its own start.
bool takeFirst(Attempts &attempts, const SourceDico &source, const QString &filter,
               const QString &path)
{
    return take(attempts, source, withRunUp(ffmpegPass(source, 0, filter, path)));
}

/// Why there is no poster.
QString reasonWithout(const SourceDico &source, RunFault fault)
{
    if (fault != RunFault::none)
        return faultReason(fault);
    const bool hasVideo = source.contains(Keys::v_width(0));
    return localised(hasVideo ? u"V_reason_noThumbnail"_s : u"V_reason_noPicture"_s);
}

} // namespace

double posterPosition(const SourceDico &source)
{
    const double duration = read(source, Keys::w_duration).value_or(0);
    for (const double position : {120.0, 60.0, 10.0}) {
        if (duration > position)
            return position;
    }
    return 0;
}

Result<PosterPicture> makePoster(const SourceDico &source, const QString &path)
{
    if (!renewWorkFolder())
        return Failure{filled(localised(u"V_reason_workFolder"_s), workFolder())};
    Attempts attempts;
    const QSize size(posterWidth, posterHeight(source));
    const double position = posterPosition(source);
    if (takeIntra(attempts, source,
                  ffmpegPass(source, position, thumbnailFilter(source, size), path)))
        return PosterPicture::intra;
    const QString filter = standardRange(source, size) + filled(u"scale=160:%ld", size.height());
    if (take(attempts, source, ffmpegPass(source, position, filter, path)) ||
        takeFirst(attempts, source, filter, path))
        return PosterPicture::any;
    return Failure{reasonWithout(source, attempts.fault)};
}

} // namespace vignar
