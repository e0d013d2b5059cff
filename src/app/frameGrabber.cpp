#include "app/frameGrabber.h"

#include "classShared/durations.h"
#include "classShared/lineLog.h"
#include "classShared/paths.h"
#include "sheet/extractionPasses.h"
#include "sheet/imageExport.h"

#include <QImage>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// Where the picture of a movie is taken, as a part of its duration: behind a black start.
constexpr double usualPart = 0.02;
constexpr double shortestMovie = 1;
constexpr double pictureDpi = 72;
/// The pictures are encoded a second time on the sheet.
constexpr double bestFactor = 1.0;

QString mood(bool isSuccess)
{
    return isSuccess ? u")"_s : u"("_s;
}

QStringList usualTimecode(const OpenedMovie &movie)
{
    const double duration = movie.duration();
    if (!(duration > shortestMovie))
        return {u"0.0"_s};
    const double increment = duration * usualPart;
    logLine(u"qtThumbs incrementF…: %.3f", increment);
    return {QString::number(increment, 'f', 3)};
}

QString picturePath(const FrameRequest &request, int index)
{
    return request.fileName.isNull() ? thumbnailPath(request.folder, index)
                                     : request.folder + u'/' + request.fileName;
}

bool writeFrame(OpenedMovie &movie, const FrameRequest &request, const QString &path)
{
    if (!request.isOverwrite && pathExists(path))
        return false;
    const QImage frame = movie.currentFrameImage();
    return imgRescale(frame, path, request.size.width(), request.size.height(), pictureDpi, 0,
                      bestFactor);
}

bool grabFrame(OpenedMovie &movie, const FrameRequest &request, const QString &timecode, int index)
{
    const double seconds = timecodeStr2Float(timecode);
    logLine(u"qtThumbs            - pass %d (tcCurrentF=%.3f)", index, seconds);
    const qint64 time = qRound64(seconds * double(movie.timeScale()));
    logLine(u"qtThumbs currTime   = %lld/%ld (%.3f)", time, movie.timeScale(), seconds);
    movie.setCurrentTime(time);
    const QString path = picturePath(request, index);
    const bool isSuccess = writeFrame(movie, request, path);
    logLine(u"#%d isSuccess        :-%@ %@", index, mood(isSuccess), path);
    return isSuccess;
}

} // namespace

bool grabFrames(MovieFramework &framework, const FrameRequest &request)
{
    logLine(u"qtThumbs            - begin");
    logLine(u"src                 : %@", request.source);
    logLine(u"dst                 : %@", request.folder);
    logLine(u"How many thumbs     ? %d (%@)", std::max<qsizetype>(1, request.timecodes.size()),
            request.timecodes.join(u'-'));
    const std::unique_ptr<OpenedMovie> movie = framework.openMovie(request.source);
    if (!movie) {
        logLine(u"Erreur              : not readable movie");
        return false;
    }
    const QStringList timecodes =
        request.timecodes.isEmpty() ? usualTimecode(*movie) : request.timecodes;
    bool isSuccess = true;
    for (int index = 0; index < timecodes.size(); ++index)
        isSuccess &= grabFrame(*movie, request, timecodes.at(index), index);
    logLine(u"qtThumbs            :-%@ end", mood(isSuccess));
    return isSuccess;
}

bool grabTestFrame(MovieFramework &framework, const QString &source, const QString &folder,
                   const QSize &size)
{
    return grabFrames(framework, {.source = source,
                                  .folder = folder,
                                  .size = size,
                                  .timecodes = {u"0.0"_s},
                                  .fileName = u"qtcompliant.jpg"_s});
}

} // namespace vignar
