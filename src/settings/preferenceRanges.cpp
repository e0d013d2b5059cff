#include "settings/preferenceRanges.h"

#include "classShared/colours.h"
#include "classShared/lineLog.h"
#include "classShared/paths.h"
#include "settings/preferenceKeys.h"

#include <QSet>
#include <QThread>

#include <algorithm>
#include <array>
#include <cmath>
#include <mutex>

namespace vignar
{
using namespace Qt::StringLiterals;

namespace
{

using Kind = PreferenceRange::Kind;
using Outside = PreferenceRange::Outside;
using Readers = PreferenceRange::Readers;

/// Widths that a sheet is legible at and a viewer still opens.
constexpr int narrowestPage = 640;
constexpr int widestPage = 7680;
/// Wider frames would leave the small pictures of most sheets no room.
constexpr int thickestFrame = 40;
/// Ten hours with a picture a minute; more would not be looked at.
constexpr int mostThumbnails = 600;
constexpr int secondsOfADay = 86400;
/// As long as a path may be on Linux.
constexpr int longestPath = 4096;
constexpr int longestLine = 1000;
/// Characters of a senseless value that the log shows.
constexpr int longestLogged = 100;

constexpr const char *pictureFormats[] = {"", "png", "webp"};

int cores()
{
    return std::max(1, QThread::idealThreadCount());
}

constexpr PreferenceRange limit(const Key<int> &key)
{
    return {.key = key.text, .kind = Kind::whole, .lowest = 1, .highest = mostThumbnails};
}

constexpr PreferenceRange index(const Key<int> &key, int highest)
{
    return {.key = key.text,
            .kind = Kind::whole,
            .highest = double(highest),
            .outside = Outside::standard};
}

constexpr PreferenceRange text(const Key<QString> &key, Kind kind, int longest)
{
    return {.key = key.text, .kind = kind, .highest = double(longest)};
}

const auto &table()
{
    static const std::array ranges{
        text(Prefs::prefDefautDstPathStr, Kind::text, longestPath),
        text(Prefs::prefSuffix, Kind::namePart, longestSuffix),
        text(Prefs::prefNameTemplate, Kind::namePart, longestLine),
        PreferenceRange{.key = Prefs::prefColor.text,
                        .kind = Kind::whole,
                        .lowest = -1,
                        .highest = 3,
                        .outside = Outside::standard,
                        .readers = Readers::window},
        index(Prefs::prefCheckMatrix, 3),
        PreferenceRange{.key = Prefs::prefAlertEnd.text},
        index(Prefs::prefDpi, 1),
        PreferenceRange{
            .key = Prefs::prefSheetFormat.text, .kind = Kind::word, .words = pictureFormats},
        PreferenceRange{.key = Prefs::prefComputerWidthAuto.text},
        PreferenceRange{.key = Prefs::prefComputerWidth.text,
                        .kind = Kind::whole,
                        .lowest = narrowestPage,
                        .highest = widestPage},
        PreferenceRange{.key = Prefs::pageBkgColor.text, .kind = Kind::colour},
        PreferenceRange{.key = Prefs::prefBorderColor.text, .kind = Kind::colour},
        PreferenceRange{
            .key = Prefs::prefBorderSize.text, .kind = Kind::decimal, .highest = thickestFrame},
        limit(Prefs::prefLimitBig),
        limit(Prefs::prefLimitMed),
        limit(Prefs::prefLimitMin),
        limit(Prefs::prefLimitMix),
        PreferenceRange{.key = Prefs::prefLimitAuto.text},
        // Its check box is on for positive numbers only.
        PreferenceRange{.key = Prefs::prefDerush.text, .kind = Kind::whole},
        PreferenceRange{.key = Prefs::prefDerushInterval.text,
                        .kind = Kind::whole,
                        .lowest = 1,
                        .highest = secondsOfADay,
                        .outside = Outside::standardBelow},
        PreferenceRange{.key = Prefs::prefTimecode.text},
        PreferenceRange{.key = Prefs::prefTrueTimecode.text},
        PreferenceRange{.key = Prefs::prefAvoidBlank.text},
        PreferenceRange{.key = Prefs::pageName.text},
        PreferenceRange{.key = Prefs::pageLocation.text},
        PreferenceRange{.key = Prefs::pageDate.text},
        PreferenceRange{.key = Prefs::pageDuration.text},
        PreferenceRange{.key = Prefs::pageVIdentity.text},
        PreferenceRange{.key = Prefs::pagePoids.text},
        PreferenceRange{.key = Prefs::pageEssence.text},
        PreferenceRange{.key = Prefs::pageComment.text},
        text(Prefs::pageCommentText, Kind::text, longestLine),
        PreferenceRange{.key = Prefs::prefMultimediaHd.text},
        PreferenceRange{.key = Prefs::prefDerushNoMultimediaHd.text},
        PreferenceRange{.key = Prefs::prefWebVtt.text},
        PreferenceRange{.key = Prefs::update.text, .readers = Readers::window},
        text(Prefs::ffFileForceFormatStr, Kind::text, longestSuffix),
        PreferenceRange{.key = Prefs::prefPlainPasses.text},
        PreferenceRange{
            .key = Prefs::prefPassProcesses.text, .kind = Kind::whole, .highest = double(cores())},
        PreferenceRange{.key = Prefs::bannerDisplayNo.text},
    };
    return ranges;
}

/// True the first time that it is asked about a key and its value.
bool isNews(const QString &key, const QVariant &stored)
{
    static std::mutex mutex;
    static QSet<QString> noted;
    const std::lock_guard lock(mutex);
    const auto before = noted.size();
    noted.insert(key + u'=' + stored.toString());
    return noted.size() > before;
}

} // namespace

bool PreferenceRange::isText() const
{
    return kind == Kind::text || kind == Kind::namePart;
}

QString PreferenceRange::described() const
{
    switch (kind) {
    case Kind::onOff:
        break;
    case Kind::whole:
        return u"a whole number from %1 to %2"_s.arg(lowest).arg(highest);
    case Kind::decimal:
        return u"a number from %1 to %2"_s.arg(lowest).arg(highest);
    case Kind::colour:
        return u"a colour of six hexadecimal digits"_s;
    case Kind::word: {
        QStringList quoted;
        for (const char *word : words)
            quoted += u"'%1'"_s.arg(QLatin1String(word));
        return u"one of %1"_s.arg(quoted.join(u", "_s));
    }
    case Kind::text:
    case Kind::namePart:
        return u"a text of at most %1 bytes"_s.arg(highest);
    }
    return u"0 or 1"_s;
}

Result<QVariant> PreferenceRange::typed(const QString &text) const
{
    bool isTaken = false;
    QVariant value = text;
    switch (kind) {
    case Kind::onOff:
    case Kind::whole: {
        const int number = text.toInt(&isTaken);
        isTaken = isTaken && number >= lowest && number <= highest;
        value = number;
        break;
    }
    case Kind::decimal: {
        const double number = text.toDouble(&isTaken);
        // Also refuses what is not a number at all, which compares with nothing.
        isTaken = isTaken && number >= lowest && number <= highest;
        value = number;
        break;
    }
    case Kind::colour:
        isTaken = colorHexaRgb(text).has_value();
        break;
    case Kind::word:
        isTaken = std::ranges::any_of(
            words, [&text](const char *word) { return text == QLatin1String(word); });
        break;
    case Kind::text:
        isTaken = text.toUtf8().size() <= highest;
        break;
    case Kind::namePart:
        isTaken = true;
        value = cutToBytes(text, qsizetype(highest));
        break;
    }
    if (isTaken)
        return value;
    return Failure{described()};
}

QVariant PreferenceRange::nearest(const QVariant &stored) const
{
    QVariant text = stored;
    if (isText())
        return text.convert(QMetaType::fromType<QString>())
                   ? cutToBytes(text.toString(), qsizetype(highest))
                   : QVariant();
    if (kind == Kind::colour || kind == Kind::word)
        return typed(stored.toString()) ? stored : QVariant();
    bool isNumber = false;
    const double number = stored.toDouble(&isNumber);
    if (!isNumber || std::isnan(number))
        return {};
    if (kind == Kind::onOff)
        return int(number != 0);
    const bool isBelow = number < lowest;
    if (!isBelow && number <= highest)
        return stored;
    if (outside == Outside::standard || (outside == Outside::standardBelow && isBelow))
        return {};
    return isBelow ? lowest : highest;
}

std::span<const PreferenceRange> preferenceRanges()
{
    return table();
}

const PreferenceRange *preferenceRange(const QString &key)
{
    const auto found = std::ranges::find(table(), key, &PreferenceRange::key);
    return found == table().end() ? nullptr : &*found;
}

QVariant valueInRange(const QString &key, const QVariant &stored)
{
    const PreferenceRange *range = preferenceRange(key);
    if (!range || !stored.isValid())
        return stored;
    const QVariant counted = range->nearest(stored);
    const bool isAsStored = counted.isValid() && counted.toString() == stored.toString();
    const bool isSwitch = range->kind == Kind::onOff && stored.typeId() == QMetaType::Bool;
    if (!isAsStored && !isSwitch && isNews(key, stored))
        logLine(u"pref not in range   : %@ '%@' is not %@ -> %@", key,
                stored.toString().left(longestLogged), range->described(),
                counted.isValid() ? counted : QVariant(u"the default"_s));
    return counted;
}

} // namespace vignar
