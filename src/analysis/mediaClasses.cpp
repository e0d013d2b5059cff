#include "analysis/mediaClasses.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace vignar
{
namespace
{

constexpr std::array mpegElementary{"mpv"_L1, "m2v"_L1, "m1v"_L1};
constexpr std::array mpegProgram{"vob"_L1, "ts"_L1,  "mod"_L1, "mpeg"_L1,
                                 "mpg"_L1, "vro"_L1, "tod"_L1};
constexpr std::array dvd{"vob"_L1, "vro"_L1};
constexpr std::array ffmpegDoubtful{"ffts"_L1, "mov"_L1, "3ivx"_L1};

constexpr std::array drm{"drms"_L1, "drmi"_L1};
constexpr std::array dv{"dvcp"_L1, "dvpp"_L1, "dvc"_L1, "dv5p"_L1, "dv5n"_L1};
constexpr std::array motionJpeg{"mjpa"_L1, "mjpeg"_L1, "mjpb"_L1, "mjpegb"_L1};
constexpr std::array indeo{"iv50"_L1,        "iv44"_L1,  "iv41"_L1, "iv32"_L1,
                           "intel indeo"_L1, "intel"_L1, "indeo"_L1};
// The last one is ffmpeg's own name for all of the ProRes flavours before it.
constexpr std::array appleIntermediate{"icod"_L1,  "aic"_L1,  "apcn"_L1, "apco"_L1,
                                       "apcs"_L1,  "ap4h"_L1, "apch"_L1, "apple prores 422"_L1,
                                       "prores"_L1};

template <std::size_t N>
bool isOneOf(const std::array<QLatin1String, N> &names, const QString &name)
{
    return std::ranges::any_of(names, [&name](QLatin1String candidate) {
        return name.compare(candidate, Qt::CaseInsensitive) == 0;
    });
}

} // namespace

bool isMpegElementaryExtension(const QString &extension)
{
    return isOneOf(mpegElementary, extension);
}

bool isMpegProgramExtension(const QString &extension)
{
    return isOneOf(mpegProgram, extension);
}

bool isMpegExtension(const QString &extension)
{
    return isMpegElementaryExtension(extension) || isMpegProgramExtension(extension);
}

bool isDvdExtension(const QString &extension)
{
    return isOneOf(dvd, extension);
}

bool isFfmpegDoubtfulExtension(const QString &extension)
{
    return isOneOf(ffmpegDoubtful, extension);
}

QString drmTagIn(QStringView text)
{
    const auto found =
        std::ranges::find_if(drm, [text](QLatin1String tag) { return text.contains(tag); });
    return found == drm.end() ? QString() : QString(*found);
}

bool isDrmCodec(const QString &codec)
{
    return isOneOf(drm, codec);
}

bool isDvCodec(const QString &codec)
{
    return isOneOf(dv, codec);
}

QString dvChroma(const QString &codec)
{
    if (codec == u"dvcp")
        return u"yuv420p"_s;
    return codec == u"dvc" ? u"yuv411p"_s : u"yuv422p"_s;
}

bool isMotionJpegCodec(const QString &codec)
{
    return isOneOf(motionJpeg, codec);
}

bool isIndeoCodec(const QString &codec)
{
    return isOneOf(indeo, codec);
}

bool isAppleIntermediateCodec(const QString &codec)
{
    return isOneOf(appleIntermediate, codec);
}

} // namespace vignar
