#include "cli/jsonLines.h"

#include "app/storedRecord.h"
#include "classShared/printable.h"
#include "classShared/standIns.h"
#include "cli/commandLine.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// Writes what a terminal might obey as JSON escapes: the values stay exact.
QString line(const QJsonObject &object)
{
    const QString json = QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
    if (printable(json) == json)
        return json;
    QString escaped;
    const QList<uint> characters = json.toUcs4();
    for (const uint each : characters) {
        const QString character = QString::fromUcs4(reinterpret_cast<const char32_t *>(&each), 1);
        if (printable(character) == character) {
            escaped += character;
            continue;
        }
        for (const QChar unit : character)
            escaped += u"\\u%1"_s.arg(unit.unicode(), 4, 16, QChar(u'0'));
    }
    return escaped;
}

QJsonValue orNull(const QString &text)
{
    return text.isEmpty() ? QJsonValue() : QJsonValue(text);
}

QString statusName(SheetOutcome::Status status)
{
    switch (status) {
    case SheetOutcome::Status::made:
        return u"made"_s;
    case SheetOutcome::Status::kept:
        return u"kept"_s;
    default:
        return u"failed"_s;
    }
}

QJsonValue orNull(int number)
{
    return number > 0 ? QJsonValue(number) : QJsonValue();
}

QJsonArray shownArguments(const QStringList &arguments)
{
    QJsonArray shown;
    for (const QString &argument : arguments)
        shown.append(shownPath(argument));
    return shown;
}

QString sheetLine(const SheetOutcome &outcome, const QString &status)
{
    QJsonObject object{{u"source"_s, shownPath(outcome.source)},
                       {u"status"_s, status},
                       {u"reason"_s, orNull(outcome.reason)},
                       {u"sheet"_s, orNull(outcome.sheet)},
                       {u"diskPicture"_s, orNull(outcome.diskPicture)},
                       {u"layout"_s, layoutName(outcome.layout)},
                       {u"format"_s, sheetExtension(outcome.format)},
                       {u"thumbnails"_s, outcome.thumbnails},
                       {u"missing"_s, outcome.missing},
                       {u"interval"_s, outcome.interval},
                       {u"intervalAsked"_s, orNull(outcome.intervalAsked)},
                       {u"seconds"_s, outcome.seconds},
                       {u"notes"_s, QJsonArray::fromStringList(outcome.notes)}};
    if (outcome.measuredDuration > 0)
        object.insert(u"measuredDuration"_s, outcome.measuredDuration);
    // Only where they were asked for.
    if (!outcome.sprite.isEmpty()) {
        object.insert(u"sprite"_s, outcome.sprite);
        object.insert(u"vtt"_s, outcome.vtt);
    }
    return line(object);
}

} // namespace

QString sheetJson(const SheetOutcome &outcome)
{
    return sheetLine(outcome, statusName(outcome.status));
}

QString refusedSheetJson(const SheetOutcome &outcome)
{
    return sheetLine(outcome, u"refused"_s);
}

QString analysedJson(const SourceDico &record)
{
    return line({{u"source"_s, readStr(record, Keys::srcPathStr)},
                 {u"status"_s, u"analysed"_s},
                 {u"reason"_s, QJsonValue()},
                 {u"record"_s, QJsonObject::fromVariantMap(storedRecord(record))}});
}

QString refusedAnalysisJson(const QString &source, const QString &reason)
{
    return line({{u"source"_s, shownPath(source)},
                 {u"status"_s, u"refused"_s},
                 {u"reason"_s, reason},
                 {u"record"_s, QJsonValue()}});
}

QString planJson(const PlannedSource &planned)
{
    const SheetPlan &plan = planned.plan;
    const bool isRefused = !planned.reason.isEmpty();
    const QSize size = plan.thumbnails.size.expandedTo({0, 0});
    QJsonArray instants;
    for (const double instant : plan.thumbnails.instants)
        instants.append(instant);
    const Dico &arguments = plan.grabberPasses.isEmpty() ? plan.ffmpegPasses : plan.grabberPasses;
    QJsonArray passes;
    for (int index = 0; index < arguments.size(); ++index)
        passes.append(shownArguments(arguments.value(QString::number(index)).toStringList()));
    return line({{u"source"_s, shownPath(planned.source)},
                 {u"status"_s, isRefused ? u"refused"_s : u"planned"_s},
                 {u"reason"_s, orNull(planned.reason)},
                 {u"layout"_s, layoutName(planned.layout)},
                 {u"columns"_s, layoutGrid(planned.layout).columns},
                 {u"thumbnails"_s, plan.thumbnails.count},
                 {u"interval"_s, plan.thumbnails.interval},
                 {u"intervalAsked"_s, orNull(plan.thumbnails.askedInterval)},
                 {u"width"_s, size.width()},
                 {u"height"_s, size.height()},
                 {u"instants"_s, instants},
                 {u"timecodes"_s, QJsonArray::fromStringList(plan.thumbnails.timecodes)},
                 {u"passes"_s, passes}});
}

} // namespace vignar
