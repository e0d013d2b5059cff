#include "analysis/mergeRules.h"

#include "analysis/durationRule.h"
#include "analysis/mediaClasses.h"
#include "classShared/lineLog.h"
#include "classShared/numbers.h"
#include "classShared/sourceDico.h"
#include "settings/stringTables.h"

#include <QSet>

#include <algorithm>
#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

namespace vignar
{
namespace
{

/// The values that the readers hold for one key; invalid where one holds none.
struct Claims {
    QVariant mp;
    QVariant ff;
    QVariant qt;

    QVariantList inReaderOrder() const
    {
        QVariantList values{mp, ff, qt};
        values.removeIf([](const QVariant &value) { return !value.isValid(); });
        return values;
    }
};

QVariant firstOf(std::initializer_list<QVariant> values)
{
    const auto found = std::ranges::find_if(values, &QVariant::isValid);
    return found == values.end() ? QVariant() : *found;
}

QString lowered(const QVariant &value)
{
    return value.toString().toLower();
}

// The rules. Each is asked only when at least two readers disagree, unless its family
// says otherwise.

QVariant fallback(const Claims &claims, const MergeContext &)
{
    return firstOf({claims.ff, claims.mp, claims.qt});
}

QVariant chroma(const Claims &claims, const MergeContext &)
{
    if (claims.mp.isValid())
        return claims.mp;
    if (claims.ff == QVariant(u"yuvj422p"_s) && claims.qt == QVariant(u"4:2:2"_s))
        return u"yuv422p"_s;
    return firstOf({claims.ff, claims.qt});
}

QVariant containerSize(const Claims &claims, const MergeContext &context)
{
    if (isMpegExtension(context.extension))
        return firstOf({claims.ff, claims.mp, claims.qt});
    return firstOf({claims.qt, claims.ff, claims.mp});
}

/// Names of the movie framework that are kept against ffmpeg's; a null name stands for any.
struct KeptCodec {
    QLatin1String qt;
    QLatin1String ff;
};
constexpr std::array keptCodecs{
    KeptCodec{"jpeg"_L1, "mjpeg"_L1},      KeptCodec{"dmb1"_L1, "mjpeg"_L1},
    KeptCodec{"mjpa"_L1, "mjpeg"_L1},      KeptCodec{"m2s"_L1, "mpeg2video"_L1},
    KeptCodec{QLatin1String(), "none"_L1}, KeptCodec{QLatin1String(), "mpeg4"_L1},
};

QVariant videoCodec(const Claims &claims, const MergeContext &context)
{
    if (claims.mp.isValid() || !claims.ff.isValid() || !claims.qt.isValid())
        return firstOf({claims.mp, claims.ff, claims.qt});
    const QString qt = lowered(claims.qt);
    const QString ff = lowered(claims.ff);
    const bool isKept = std::ranges::any_of(keptCodecs, [&](const KeptCodec &kept) {
        return ff == kept.ff && (kept.qt.isNull() || qt == kept.qt);
    });
    if (isDvCodec(qt) || isKept || isFfmpegDoubtfulExtension(context.extension))
        return claims.qt;
    return claims.ff;
}

bool isStandardAspect(const QString &ratio)
{
    return ratio == u"4:3" || ratio == u"16:9";
}

QVariant aspect(const Claims &claims, const MergeContext &context)
{
    const QString qt = claims.qt.toString();
    const QString ff = claims.ff.toString();
    logLine(u"par/dar differents, qt=%@, ff=%@", qt, ff);
    if (qt.contains(u':') && ff.contains(u':') &&
        std::abs(fractionStr2Float(qt) - fractionStr2Float(ff)) <= 0.01) {
        if (isStandardAspect(qt))
            return claims.qt;
        if (isStandardAspect(ff))
            return claims.ff;
    }
    if (context.extension == u"mov")
        return firstOf({claims.qt, claims.ff, claims.mp});
    return firstOf({claims.ff, claims.qt, claims.mp});
}

QVariant fieldOrder(const Claims &claims, const MergeContext &)
{
    // The MPEG reader cannot tell the order of fields, only that there are none.
    if (claims.mp == QVariant(localised(u"PFF"_s, fieldsTable)))
        return claims.mp;
    return firstOf({claims.qt, claims.ff, claims.mp});
}

QVariant audioCodec(const Claims &claims, const MergeContext &context)
{
    const QString qt = lowered(claims.qt);
    const QString ff = lowered(claims.ff);
    // Where the names differ otherwise ("aac" and "aac lc", "mp2" and "mpeg-1 audio
    // layer 2"), ffmpeg's is the plainer one.
    if (qt == ff || (qt == u"vdva" && ff == u"pcm_s16le"))
        return claims.qt;
    return fallback(claims, context);
}

QVariant audioOffset(const Claims &claims, const MergeContext &)
{
    return firstOf({claims.ff, claims.qt, claims.mp});
}

QVariant frameRate(const Claims &claims, const MergeContext &context)
{
    return reconciledFrameRate(
        {.mp = claims.mp.toDouble(), .ff = claims.ff.toDouble(), .qt = claims.qt.toDouble()},
        context.frameRate);
}

QVariant duration(const Claims &claims, const MergeContext &context)
{
    if (context.bundleDuration)
        return *context.bundleDuration;
    return reconciledDuration({.mp = claims.mp, .ff = claims.ff, .qt = claims.qt},
                              context.extension);
}

QVariant firstReader(const Claims &claims, const MergeContext &)
{
    return firstOf({claims.mp, claims.ff, claims.qt});
}

/// Keys whose name begins and holds so.
struct Family {
    /// Null: any beginning.
    QLatin1String beginning;
    QLatin1String word;
    QVariant (*rule)(const Claims &claims, const MergeContext &context);
    /// The rule also speaks where one reader is alone or all agree.
    bool isAlwaysAsked = false;
};

/// The first family that matches a key is its own.
constexpr std::array families{
    Family{"v"_L1, "chroma"_L1, chroma},
    Family{"w"_L1, "width"_L1, containerSize},
    Family{"w"_L1, "height"_L1, containerSize},
    Family{"v"_L1, "codec"_L1, videoCodec},
    Family{"v"_L1, "par"_L1, aspect},
    Family{"v"_L1, "dar"_L1, aspect},
    Family{"v"_L1, "fields"_L1, fieldOrder},
    Family{"a"_L1, "codec"_L1, audioCodec},
    Family{"a"_L1, "offset"_L1, audioOffset},
    Family{QLatin1String(), "fps"_L1, frameRate, true},
    Family{QLatin1String(), "duration"_L1, duration, true},
    Family{QLatin1String(), "bitrate"_L1, firstReader},
    Family{QLatin1String(), QLatin1String(), fallback},
};

const Family &familyOf(const QString &key)
{
    return *std::ranges::find_if(families, [&key](const Family &family) {
        return key.startsWith(family.beginning) && key.contains(family.word);
    });
}

QVariant mergedValue(const QString &key, const ReaderDicos &readers, const MergeContext &context)
{
    Claims claims{readers.mp.value(key), readers.ff.value(key), readers.qt.value(key)};
    const Family &family = familyOf(key);
    if (!family.isAlwaysAsked && claims.inReaderOrder().size() == 1)
        return claims.inReaderOrder().constFirst();
    for (QVariant *claim : {&claims.mp, &claims.ff, &claims.qt}) {
        if (claim->isValid() && describe(*claim).isEmpty())
            claim->clear();
    }
    const QVariantList values = claims.inReaderOrder();
    const bool isAgreed = std::ranges::all_of(
        values, [&values](const QVariant &value) { return value == values.constFirst(); });
    if (isAgreed && !family.isAlwaysAsked)
        return values.value(0);
    return family.rule(claims, context);
}

} // namespace

Dico mergedRecord(const ReaderDicos &readers, const MergeContext &context)
{
    QSet<QString> keys{Keys::v_fps(0), Keys::w_duration};
    for (const Dico *dico : {&readers.mp, &readers.ff, &readers.qt}) {
        const QStringList held = dico->keys();
        keys.unite({held.cbegin(), held.cend()});
    }
    Dico record;
    for (const QString &key : std::as_const(keys)) {
        if (const QVariant value = mergedValue(key, readers, context); value.isValid())
            record.insert(key, value);
    }
    return record;
}

} // namespace vignar
