#include "sheet/extractionPasses.h"

#include "classShared/format.h"
#include "settings/stringTables.h"
#include "sheet/pictureTimes.h"
#include "sheet/plannedSource.h"
#include "sheet/thumbnailPlan.h"
#include "sheet/toneMapping.h"
#include "tasks/toolPlaces.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <cmath>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr QStringView intraSelection = u"select=eq(pict_type\\,I),";

/// Long enough to hold a key frame of what people record, short enough to decode.
constexpr double runUpSeconds = 30;

/// More than three decimals round off, less than the time of one picture at 500 a second.
constexpr double roundingSeconds = 0.001;

/// A name that no tool can take for an option or, as "concat:a", for a protocol.
QString sourcePath(const SourceDico &source)
{
    const QFileInfo file(readStr(source, Keys::srcPathStr));
    return file.isAbsolute() ? file.filePath() : file.absoluteFilePath();
}

/// ffmpeg reads "%d" anywhere in a picture's path, folders included, as a place for a
/// number, and "%%" as one sign only where a "%d" follows. Updating one picture again
/// and again is its only way of writing that takes the path as it stands.
QStringList literalPathOptions(const QString &outputPath)
{
    return outputPath.contains(u'%') ? QStringList{u"-update"_s, u"1"_s} : QStringList();
}

/// Nothing where there is but one video stream.
QStringList streamOptions(const SourceDico &source)
{
    const auto stream = namedStream(source);
    return stream ? QStringList{u"-map"_s, u"0:%1"_s.arg(*stream)} : QStringList();
}

/// The pass entering the source at one place and decoding up to the instant.
QStringList enteredAt(double entry, double instant, const QStringList &pass, QStringView format)
{
    const qsizetype seek = pass.indexOf(u"-ss"_s);
    const qsizetype input = pass.indexOf(u"-i"_s);
    QStringList slow = pass;
    slow.insert(input + 2, u"-ss"_s);
    slow.insert(input + 3, filled(format, instant - entry));
    // Entering at 0 is no seek at all: some files cannot even seek there.
    if (entry > 0)
        slow[seek + 1] = filled(format, entry);
    else
        slow.remove(seek, 2);
    // Pictures that only lead to the instant are spared the slow tone mapping, and are
    // not told of.
    const qsizetype filter = slow.indexOf(u"-vf"_s) + 1;
    if (filter > 0 && (isToneMapped(slow.value(filter)) || tellsTimes(slow.value(filter))))
        slow[filter].prepend(u"trim=start="_s + filled(format, instant - entry) + u',');
    return slow;
}

} // namespace

bool usesMovieGrabber(const SourceDico &source)
{
    return read(source, Keys::dec) == quickTimeDecoder ||
           read(source, Keys::decSkip) == ffmpegDecoder;
}

QString thumbnailPath(const QString &folder, int index)
{
    return filled(u"%@/img%02ld.jpg", folder, index);
}

int thumbnailIndex(const QString &path)
{
    static const QRegularExpression pattern(u"^img([0-9]+)\\.jpg\\z"_s);
    bool isNumber = false;
    const int index = pattern.match(QFileInfo(path).fileName()).captured(1).toInt(&isNumber);
    return isNumber ? index : -1;
}

QString thumbnailFilter(const SourceDico &source, const QSize &size)
{
    const bool mayBeAnyPicture = read(source, Keys::intraFailure).value_or(0) != 0;
    const bool isProgressive = read(source, Keys::v_fields, 0) == localised(u"PFF"_s, fieldsTable);
    return filled(u"%@%@%@scale=%ld:%ld,setsar=1/1",
                  mayBeAnyPicture ? QStringView(u"") : intraSelection,
                  isProgressive ? QStringView(u"") : QStringView(u"yadif=1,"),
                  standardRange(source, size), size.width(), size.height());
}

QString standardRange(const SourceDico &source, const QSize &size)
{
    return isHighDynamicRange(source) ? toneMapping(source, size, toneMapperOf(ffmpegPath()))
                                      : u""_s;
}

QStringList ffmpegPass(const SourceDico &source, double instant, const QString &filter,
                       const QString &outputPath)
{
    QStringList pass{ffmpegPath(), u"-ss"_s, filled(u"%.2f", instant), u"-loglevel"_s,
                     u"info"_s,    u"-i"_s,  sourcePath(source)};
    pass << streamOptions(source);
    pass << QStringList{u"-t"_s,  u"12"_s,  u"-vframes"_s, u"1"_s,    u"-vf"_s, filter,  u"-b:v"_s,
                        u"20M"_s, u"-bt"_s, u"1000M"_s,    u"-q:v"_s, u"1"_s,   u"-an"_s};
    return pass << literalPathOptions(outputPath) << u"-y"_s << outputPath;
}

QStringList exactPass(const SourceDico &source, double instant, const QString &filter,
                      const QString &outputPath)
{
    // A whole number of seconds to enter at leaves one rounding instead of two.
    const double entry = std::max(0.0, std::floor(instant - runUpSeconds));
    const QStringList pass = ffmpegPass(source, instant, filter, outputPath);
    QStringList exact = enteredAt(entry, instant, withoutIntraSelection(pass), u"%.3f");
    // ffmpeg takes the first picture that is not before the instant: delayed a little, the
    // wanted one is not missed by the rounding. The delay has another effect that is wanted:
    // without any, ffmpeg would count a transport stream that is read from its start from
    // the first picture, and any other from the first of all its streams.
    exact.insert(exact.indexOf(u"-i"_s), u"-itsoffset"_s);
    exact.insert(exact.indexOf(u"-i"_s), filled(u"%.3f", roundingSeconds));
    return exact;
}

QStringList withoutIntraSelection(const QStringList &pass)
{
    QStringList freed = pass;
    const qsizetype filter = freed.indexOf(u"-vf"_s) + 1;
    if (filter > 0 && filter < freed.size() && freed[filter].startsWith(intraSelection))
        freed[filter].remove(0, intraSelection.size());
    return freed;
}

QStringList withRunUp(const QStringList &pass)
{
    const qsizetype seek = pass.indexOf(u"-ss"_s);
    const qsizetype input = pass.indexOf(u"-i"_s);
    if (seek < 0 || input < seek)
        return pass;
    const double instant = pass.value(seek + 1).toDouble();
    return enteredAt(std::max(0.0, instant - runUpSeconds), instant, pass, u"%.2f");
}

QStringList nextAttempt(const QStringList &pass)
{
    if (const QStringList freed = withoutIntraSelection(pass); freed != pass)
        return freed;
    const qsizetype input = pass.indexOf(u"-i"_s);
    const bool hasRunUp = pass.indexOf(u"-ss"_s, input) > input;
    return hasRunUp ? QStringList() : withRunUp(pass);
}

QStringList grabberPass(const SourceDico &source, const ThumbnailPlan &plan, const QString &folder)
{
    QStringList timecodes = plan.timecodes;
    timecodes.removeAll(QString());
    return {toolsFolder() + u"/qtThumbs"_s,
            u"-i"_s,
            sourcePath(source),
            u"-w"_s,
            QString::number(plan.size.width()),
            u"-h"_s,
            QString::number(plan.size.height()),
            u"-tc"_s,
            timecodes.join(u'-'),
            u"-y"_s,
            u"-o"_s,
            folder};
}

} // namespace vignar
