#include "cli/recordText.h"

#include "classShared/durations.h"
#include "classShared/format.h"
#include "classShared/printable.h"
#include "classShared/standIns.h"
#include "cli/commandLine.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <map>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// How people call a property and what it is counted in.
struct Property {
    QLatin1String name;
    QLatin1String label;
    QLatin1String unit;
};

/// In the order of the output; what is not listed follows under its own name.
constexpr std::array properties{
    Property{"wrapper"_L1, "format"_L1, {}},
    Property{"w_duration"_L1, "duration"_L1, "seconds"_L1},
    Property{"w_offset"_L1, "starts at"_L1, "seconds"_L1},
    Property{"w_bitrate"_L1, "bit rate"_L1, "kb/s"_L1},
    Property{"w_comment"_L1, "comment"_L1, {}},
    Property{"chapters"_L1, "chapters at"_L1, "seconds"_L1},
    Property{"dec"_L1, "decoder"_L1, {}},
    Property{"codec"_L1, "codec"_L1, {}},
    Property{"lang"_L1, "language"_L1, {}},
    Property{"lang+"_L1, "title"_L1, {}},
    Property{"width"_L1, "width"_L1, "pixels"_L1},
    Property{"height"_L1, "height"_L1, "pixels"_L1},
    Property{"dar"_L1, "display aspect"_L1, {}},
    Property{"par"_L1, "pixel aspect"_L1, {}},
    Property{"rotation"_L1, "turned by"_L1, "degrees clockwise"_L1},
    Property{"fps"_L1, "frame rate"_L1, "frames per second"_L1},
    Property{"fields"_L1, "fields"_L1, {}},
    Property{"pixelFormat"_L1, "pixel format"_L1, {}},
    Property{"transfer"_L1, "transfer"_L1, {}},
    Property{"primaries"_L1, "primaries"_L1, {}},
    Property{"matrix"_L1, "colour matrix"_L1, {}},
    Property{"range"_L1, "colour range"_L1, {}},
    Property{"rate"_L1, "sample rate"_L1, "Hz"_L1},
    Property{"channels"_L1, "channels"_L1, {}},
    Property{"bitrate"_L1, "bit rate"_L1, "kb/s"_L1},
    Property{"offsetMs"_L1, "starts after video"_L1, "milliseconds"_L1},
    Property{"id"_L1, "stream number"_L1, {}},
};

/// What the record holds for the program's own use.
bool isOwnBusiness(const QString &key)
{
    return QStringList{Keys::srcPathStr, Keys::imgPathStr, Keys::dstFolderNameStr,
                       Keys::dstFileNameStr, Keys::decSkip}
        .contains(key);
}

bool isUnknownRate(const QString &key, const QVariant &value)
{
    return key.endsWith(u"_fps") && value.toDouble() == unknownFrameRate;
}

/// A property with the group that it is shown in.
struct Entry {
    QString group;
    QString name;
    QVariant value;
    /// It belongs to a stream that the record does not know.
    bool isStray = false;
};

/// The number of the stream of a type ("a") that the file numbers so; -1: none.
int streamNumber(const SourceDico &record, const QString &type, int streamId)
{
    const StreamKey<int> id{type.front().toLatin1(), Keys::a_id.property.data()};
    for (int number = 0; record.contains(id(number)); ++number) {
        if (read(record, id, number) == streamId)
            return number;
    }
    return -1;
}

Entry entryOf(const SourceDico &record, const QString &key)
{
    static const QRegularExpression stream(u"^([vas])(\\d+)_(.*)$"_s);
    const QRegularExpressionMatch match = stream.match(key);
    if (!match.hasMatch())
        return {u"container"_s, key, record.value(key)};
    const QString type = match.captured(1);
    const QString name = match.captured(3);
    int number = match.captured(2).toInt();
    // Start offsets alone are told apart by the number that the file gives the stream.
    if (name == u"offsetMs")
        number = streamNumber(record, type, number);
    const QString label = type == u"v" ? u"video"_s : type == u"a" ? u"audio"_s : u"subtitles"_s;
    return {u"%1 %2"_s.arg(label).arg(number), name, record.value(key), number < 0};
}

int rankOf(const QString &group)
{
    static const QStringList order{u"container"_s, u"video"_s, u"audio"_s, u"subtitles"_s};
    return static_cast<int>(order.indexOf(group.section(u' ', 0, 0)));
}

QString valueText(const Entry &entry, QLatin1String unit)
{
    QStringList texts;
    const bool isList = entry.value.typeId() == QMetaType::QVariantList;
    for (const QVariant &item : isList ? entry.value.toList() : QVariantList{entry.value}) {
        bool isNumber = false;
        const double number = item.toDouble(&isNumber);
        texts.append(isNumber && item.typeId() != QMetaType::QString
                         ? QString::number(number, 'g', 7)
                         : describe(item));
    }
    if (entry.name == QString(Keys::dec))
        return entry.value.toInt() == ffmpegDecoder ? u"ffmpeg"_s : u"movie framework"_s;
    QString text = texts.join(u", "_s);
    if (!unit.isEmpty())
        text += u' ' + unit;
    if (entry.name == QString(Keys::w_duration))
        text += u" (%1)"_s.arg(duree2TimecodeStr(entry.value.toFloat(), 2, true));
    return text;
}

/// The rank of a property among those of its group, and its line.
std::pair<qsizetype, QString> lineOf(const Entry &entry)
{
    const auto found = std::ranges::find_if(
        properties, [&](const Property &property) { return property.name == entry.name; });
    const bool isKnown = found != properties.end();
    const QString label = isKnown ? QString(found->label) : entry.name;
    return {found - properties.begin(),
            u"    %1 %2"_s.arg(label, -20)
                .arg(valueText(entry, isKnown ? found->unit : QLatin1String()))};
}

} // namespace

QString recordText(const SourceDico &record)
{
    std::map<std::pair<int, QString>, std::vector<std::pair<qsizetype, QString>>> groups;
    for (const QString &key : record.keys()) {
        if (isOwnBusiness(key) || isUnknownRate(key, record.value(key)))
            continue;
        const Entry entry = entryOf(record, key);
        // The last piece of a longer list; the pixel format says it whole.
        if (entry.isStray || entry.name == Keys::v_chroma.property)
            continue;
        groups[{rankOf(entry.group), entry.group}].push_back(lineOf(entry));
    }
    QStringList lines{printable(readStr(record, Keys::srcPathStr))};
    for (auto &[group, groupLines] : groups) {
        lines.append(u"  "_s + group.second);
        std::ranges::sort(groupLines);
        for (const auto &[rank, line] : groupLines)
            lines.append(printable(line));
    }
    return lines.join(u'\n');
}

QString planText(const PlannedSource &planned)
{
    const ThumbnailPlan &thumbnails = planned.plan.thumbnails;
    QStringList lines{printable(shownPath(planned.source)),
                      u"  %1 thumbnails of %2x%3 pixels, layout %4 (%5 columns), every %6 s"_s
                          .arg(thumbnails.count)
                          .arg(thumbnails.size.width())
                          .arg(thumbnails.size.height())
                          .arg(layoutName(planned.layout))
                          .arg(layoutGrid(planned.layout).columns)
                          .arg(thumbnails.interval, 0, 'f', 2)};
    for (size_t index = 0; index < thumbnails.instants.size(); ++index)
        lines.append(u"  %1  %2 s  %3"_s.arg(index, 2)
                         .arg(thumbnails.instants[index], 10, 'f', 2)
                         .arg(thumbnails.timecodes.value(qsizetype(index))));
    return lines.join(u'\n');
}

} // namespace vignar
