#include "analysis/mpeginfoFunction.h"

#include "classShared/lineLog.h"
#include "classShared/sourceDico.h"
#include "settings/stringTables.h"

using namespace Qt::StringLiterals;

namespace vignar
{
namespace
{

using timecode = vignar::mpegInfo::timecode;

/// All 18 bits of the field set: the rate varies.
constexpr long variableBitRate = 0x3FFFF * 400L;

int wholeSeconds(const timecode &code)
{
    return code.hours * 3600 + code.minutes * 60 + code.seconds;
}

/// The pictures of a timecode in seconds; none without a frame rate.
double pictureSeconds(const timecode &code, double frameRate)
{
    return frameRate > 0 ? code.pictures / frameRate : 0;
}

QString described(const timecode &code)
{
    return filled(u"%02u:%02u:%02u.%02u", code.hours, code.minutes, code.seconds, code.pictures);
}

QString wrapperOf(const mpegInfo &reader)
{
    return reader.isMuxed() ? u"mpeg"_s : filled(u"mpeg%ldvideo", reader.isMPeg2() ? 2 : 1);
}

void writeTimes(Dico &dico, const mpegInfo &reader)
{
    const timecode duration = reader.duration();
    const double pictures = pictureSeconds(duration, reader.frameRate());
    const double seconds = wholeSeconds(duration) + pictures;
    write(dico, Keys::w_duration, seconds);
    // The pictures count as whole seconds here.
    write(dico, Keys::w_offset, wholeSeconds(reader.begin()) + reader.begin().pictures);

    logDebug(u"Begin Time          : %@\n", described(reader.begin()));
    logDebug(u"End Time            : %@\n", described(reader.end()));
    logDebug(u"Duration            : %@\n", filled(u"%02u:%02u:%02u.%.2f", duration.hours,
                                                   duration.minutes, duration.seconds, pictures));
    logDebug(u"w_duration          : %.3f\n", seconds);
}

void writePicture(Dico &dico, const mpegInfo &reader)
{
    write(dico, Keys::v_width, 0, reader.horizontalSize());
    write(dico, Keys::v_height, 0, reader.verticalSize());
    if (reader.bitRate() != variableBitRate)
        write(dico, Keys::v_bitrate, 0, int(reader.bitRate() / 1000));
    write(dico, Keys::v_fps, 0, reader.frameRate());
    write(dico, Keys::v_dar, 0, reader.isWideScreen() ? u"16:9"_s : u"4:3"_s);
    write(dico, Keys::v_fields, 0,
          reader.isProgressive() ? localised(u"PFF"_s, fieldsTable) : u"i"_s);
    const QStringList chromaFormats{{}, u"yuv420p"_s, u"yuv422p"_s, u"yuv444p"_s};
    if (const QString chroma = chromaFormats.value(reader.chromaFormat()); !chroma.isNull())
        write(dico, Keys::v_chroma, 0, chroma);
}

} // namespace

mpegInfo mpeginfoFunction::mpegInfo(const QString &path)
{
    return vignar::mpegInfo(path);
}

std::optional<Dico> mpeginfoFunction::mpegInfoDico(const QString &path)
{
    logLine(u"mpegInfo            - start");
    vignar::mpegInfo reader;
    if (const QString error = reader.readInformations(path); !error.isNull()) {
        logLine(u"mpegInfoDico error  :-( %@", error);
        return std::nullopt;
    }
    Dico dico;
    write(dico, Keys::wrapper, wrapperOf(reader));
    writePicture(dico, reader);
    if (!reader.isMuxed())
        writeTimes(dico, reader);
    logLine(u"mpegInfo            - end\n\n");
    return dico;
}

} // namespace vignar
