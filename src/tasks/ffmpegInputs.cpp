#include "tasks/ffmpegInputs.h"

#include <array>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

/// Containers of the declared extensions, then bare streams, then what recorders and
/// messengers name like them, then sound alone, which is to be refused as such. Formats that
/// name other files (hls, dash, concat, imf, sdp, vobsub, ...), devices and generators must
/// never be added, nor texts and still pictures.
constexpr std::array demuxers{
    "mov"_L1,       "matroska"_L1, "avi"_L1,   "mpeg"_L1,   "mpegts"_L1,       "mpegvideo"_L1,
    "flv"_L1,       "asf"_L1,      "asf_o"_L1, "ogg"_L1,    "rm"_L1,           "dv"_L1,
    "mxf"_L1,       "wtv"_L1,      "nut"_L1,   "gxf"_L1,    "yuv4mpegpipe"_L1, "h261"_L1,
    "h263"_L1,      "h264"_L1,     "hevc"_L1,  "m4v"_L1,    "vc1"_L1,          "vc1test"_L1,
    "cavsvideo"_L1, "avs2"_L1,     "avs3"_L1,  "av1"_L1,    "obu"_L1,          "ivf"_L1,
    "dirac"_L1,     "dnxhd"_L1,    "mjpeg"_L1, "mpjpeg"_L1, "live_flv"_L1,     "kux"_L1,
    "mxg"_L1,       "dhav"_L1,     "nuv"_L1,   "nsv"_L1,    "pva"_L1,          "ty"_L1,
    "gif"_L1,       "apng"_L1,     "aac"_L1,   "ac3"_L1,    "eac3"_L1,         "dts"_L1,
    "mp3"_L1,       "flac"_L1,     "wav"_L1,   "w64"_L1,    "aiff"_L1,         "caf"_L1,
    "amr"_L1,
};

/// A table of twenty million pictures, or one of 16,000 pixels square, still fits.
constexpr qint64 largestAllocation = qint64{512} << 20;

/// The options of one input, up to its "-i", as they are to be executed.
QStringList confinedInput(const QStringList &options)
{
    QStringList confined = options;
    QString allowed = sourceDemuxers();
    const bool hasOwnList = options.contains(u"-protocol_whitelist"_s);
    if (hasOwnList && options.contains(u"concat"_s))
        allowed.prepend(u"concat,"_s);
    if (!hasOwnList)
        confined << u"-protocol_whitelist"_s << u"file"_s;
    return confined << u"-format_whitelist"_s << allowed;
}

} // namespace

QString sourceDemuxers()
{
    QStringList names;
    for (const QLatin1String name : demuxers)
        names << name;
    return names.join(u',');
}

QStringList confinedToSources(const QStringList &arguments)
{
    if (!arguments.contains(u"-i"_s))
        return arguments;
    QStringList confined{u"-max_alloc"_s, QString::number(largestAllocation)};
    QStringList options;
    for (qsizetype at = 0; at < arguments.size(); ++at) {
        if (arguments.at(at) != u"-i" || at + 1 == arguments.size()) {
            options << arguments.at(at);
            continue;
        }
        confined << confinedInput(options) << u"-i"_s << arguments.at(++at);
        options.clear();
    }
    return confined + options;
}

} // namespace vignar
