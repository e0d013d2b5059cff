#include "sheet/toneMapping.h"

#include "tasks/blockingRuns.h"

#include <QHash>
#include <QMutex>
#include <QRegularExpression>

#include <algorithm>
#include <initializer_list>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr QLatin1String pq{"smpte2084"};
constexpr QLatin1String hlg{"arib-std-b67"};

QString transferOf(const SourceDico &source)
{
    return read(source, Keys::v_transfer, 0).value_or(QString());
}

/// The value when it is one of the names, else the standard one: nothing else that a
/// report may say gets into a filter text.
QString named(const std::optional<QString> &value, std::initializer_list<QLatin1String> names,
              QLatin1String standard)
{
    const bool isKnown = value && std::ranges::find(names, *value) != names.end();
    return isKnown ? *value : QString(standard);
}

QString matrixOf(const SourceDico &source)
{
    return named(read(source, Keys::v_matrix, 0),
                 {"bt709"_L1, "smpte170m"_L1, "bt470bg"_L1, "bt2020c"_L1, "ictcp"_L1, "gbr"_L1},
                 "bt2020nc"_L1);
}

QString primariesOf(const SourceDico &source)
{
    return named(read(source, Keys::v_primaries, 0),
                 {"bt709"_L1, "smpte170m"_L1, "bt470bg"_L1, "smpte431"_L1, "smpte432"_L1},
                 "bt2020"_L1);
}

QString rangeOf(const SourceDico &source)
{
    return named(read(source, Keys::v_range, 0), {"pc"_L1}, "tv"_L1);
}

/// The size comes first: at that of a UHD source each step would hold 100 MB a picture.
QString zscaleMapping(const SourceDico &source, const QSize &size)
{
    return u"zscale=w=%1:h=%2:f=bicubic:tin=%3:min=%4:pin=%5:rin=%6:t=linear:npl=203,"
           "format=gbrpf32le,zscale=p=bt709,tonemap=mobius:desat=0,"
           "zscale=t=bt709:m=bt470bg:r=pc,format=yuv444p,"_s.arg(size.width())
               .arg(size.height())
               .arg(transferOf(source), matrixOf(source), primariesOf(source), rangeOf(source));
}

/// Leaves in register 1 the light of a stored value, 1 being 203 cd/m² (BT.2100, tables
/// 4 and 5; HLG for a display of 1000 cd/m²).
QString lightOf(const QString &transfer)
{
    if (transfer == pq)
        return u"st(0,pow(val/maxval,1/78.84375));st(1,10000/203*pow(max(ld(0)-0.8359375,0)"
               "/(18.8515625-18.6875*ld(0)),1/0.1593017578125));"_s;
    return u"st(0,val/maxval);st(0,if(lte(ld(0),0.5),ld(0)*ld(0)/3,"
           "(exp((ld(0)-0.55991073)/0.17883277)+0.28466892)/12));"
           "st(1,1000/203*pow(ld(0),1.2));"_s;
}

QString forEachColour(const QString &expression)
{
    return u"lutrgb=r='%1':g='%1':b='%1',"_s.arg(expression);
}

/// The Möbius curve is that of the other mapper for a light of up to 10 (tonemap's own
/// assumption), which it makes 1; up to 0.3 nothing changes.
QString tablesMapping(const SourceDico &source, const QSize &size)
{
    const QString matrix = matrixOf(source).startsWith("bt2020"_L1) ? u"bt2020"_s : u"auto"_s;
    const QString curve = u"clip(maxval*if(lte(ld(1),0.3),ld(1),"
                          "1.054444*(ld(1)-0.085353)/(ld(1)+0.454444)),0,maxval)"_s;
    const QString toBt709 = u"colorchannelmixer=1.6605:-0.5876:-0.0728:0:"
                            "-0.1246:1.1329:-0.0083:0:-0.0182:-0.1006:1.1187,"_s;
    return u"scale=%1:%2:in_color_matrix=%3:in_range=%4,format=gbrp16le,"_s.arg(size.width())
               .arg(size.height())
               .arg(matrix, rangeOf(source)) +
           forEachColour(lightOf(transferOf(source)) + curve) +
           (primariesOf(source) == "bt2020"_L1 ? toBt709 : QString()) +
           forEachColour(u"maxval*pow(val/maxval,1/2.4)"_s) + u"setparams=colorspace=gbr,"_s;
}

ToneMapper askedMapper(const QString &ffmpeg)
{
    const QString filters = taskArray({ffmpeg, u"-hide_banner"_s, u"-filters"_s});
    const auto isListed = [&filters](const QString &name) {
        return QRegularExpression(u"^ \\S+ +"_s + name + u" "_s,
                                  QRegularExpression::MultilineOption)
            .match(filters)
            .hasMatch();
    };
    return isListed(u"zscale"_s) && isListed(u"tonemap"_s) ? ToneMapper::zscale
                                                           : ToneMapper::tables;
}

} // namespace

bool isHighDynamicRange(const SourceDico &source)
{
    const QString transfer = transferOf(source);
    return transfer == pq || transfer == hlg;
}

QString toneMapping(const SourceDico &source, const QSize &size, ToneMapper mapper)
{
    if (!isHighDynamicRange(source))
        return u""_s;
    return mapper == ToneMapper::zscale ? zscaleMapping(source, size) : tablesMapping(source, size);
}

bool isToneMapped(const QString &filter)
{
    return filter.contains("tonemap="_L1) || filter.contains("lutrgb="_L1);
}

ToneMapper toneMapperOf(const QString &ffmpeg)
{
    static QMutex mutex;
    static QHash<QString, ToneMapper> answers;
    const QMutexLocker locker(&mutex);
    if (!answers.contains(ffmpeg))
        answers.insert(ffmpeg, askedMapper(ffmpeg));
    return answers.value(ffmpeg);
}

} // namespace vignar
