#include "cli/recordText.h"

#include "classShared/format.h"
#include "cli/commandLine.h"
#include "cli/terminal.h"

#include <QRegularExpression>

#include <map>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// The unit of a property, told by the end of its key.
QString unitOf(const QString &key)
{
    static const std::map<QString, QString> units{
        {u"duration"_s, u"s"_s},    {u"offset"_s, u"s"_s},     {u"bitrate"_s, u"kb/s"_s},
        {u"rate"_s, u"Hz"_s},       {u"fps"_s, u"frames/s"_s}, {u"width"_s, u"pixels"_s},
        {u"height"_s, u"pixels"_s}, {u"offsetMs"_s, u"ms"_s},  {u"rotation"_s, u"degrees"_s},
    };
    const auto found = units.find(key.section(u'_', -1));
    return found == units.end() ? QString() : u' ' + found->second;
}

/// "container", "video 0", … for a key.
QString groupOf(const QString &key)
{
    static const QRegularExpression stream(u"^([vas])(\\d+)_"_s);
    const QRegularExpressionMatch match = stream.match(key);
    if (!match.hasMatch())
        return u"container"_s;
    const QString type = match.captured(1);
    const QString name = type == u"v" ? u"video"_s : type == u"a" ? u"audio"_s : u"subtitles"_s;
    return name + u' ' + match.captured(2);
}

int rankOf(const QString &group)
{
    static const QStringList order{u"container"_s, u"video"_s, u"audio"_s, u"subtitles"_s};
    return static_cast<int>(order.indexOf(group.section(u' ', 0, 0)));
}

QString valueText(const QVariant &value)
{
    if (value.typeId() == QMetaType::QVariantList) {
        QStringList texts;
        for (const QVariant &item : value.toList())
            texts.append(describe(item));
        return texts.join(u", "_s);
    }
    return describe(value);
}

} // namespace

QString recordText(const SourceDico &record)
{
    std::map<std::pair<int, QString>, QStringList> groups;
    for (auto entry = record.cbegin(); entry != record.cend(); ++entry) {
        if (entry.key() == QString(Keys::srcPathStr) || entry.key() == QString(Keys::imgPathStr))
            continue;
        const QString group = groupOf(entry.key());
        const QString name = group == u"container" ? entry.key() : entry.key().section(u'_', 1);
        groups[{rankOf(group), group}].append(
            u"    %1 %2%3"_s.arg(name, -18).arg(valueText(entry.value()), unitOf(entry.key())));
    }
    QStringList lines{printable(readStr(record, Keys::srcPathStr))};
    for (const auto &[group, properties] : groups) {
        lines.append(u"  "_s + group.second);
        for (const QString &property : properties)
            lines.append(printable(property));
    }
    return lines.join(u'\n');
}

QString planText(const QString &source, int layout, const SheetPlan &plan)
{
    const ThumbnailPlan &thumbnails = plan.thumbnails;
    QStringList lines{printable(source),
                      u"  %1 thumbnails of %2x%3 pixels, layout %4 (%5 columns), every %6 s"_s
                          .arg(thumbnails.count)
                          .arg(thumbnails.size.width())
                          .arg(thumbnails.size.height())
                          .arg(layoutName(layout))
                          .arg(layoutGrid(layout).columns)
                          .arg(thumbnails.interval, 0, 'f', 2)};
    for (size_t index = 0; index < thumbnails.instants.size(); ++index)
        lines.append(u"  %1  %2 s  %3"_s.arg(index, 2)
                         .arg(thumbnails.instants[index], 10, 'f', 2)
                         .arg(thumbnails.timecodes.value(qsizetype(index))));
    return lines.join(u'\n');
}

} // namespace vignar
