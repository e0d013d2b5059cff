#include "analysis/ffReport.h"

#include "analysis/reportText.h"
#include "classShared/lineLog.h"
#include "classShared/numbers.h"

using namespace Qt::StringLiterals;

namespace vignar
{

QStringList ffReplaceSetdar(const QStringList &arguments, const QString &newValue)
{
    QStringList result = arguments;
    const qsizetype at = arguments.indexOf(u"-vf"_s) + 1;
    if (at == 0 || at >= arguments.size())
        return result;
    const QString mark = u"setdar="_s;
    const QString chain = arguments.at(at);
    if (!chain.contains(mark))
        return result;
    const QString strAfter = textAfter(chain, mark).toString();
    const QString strBefore = textBefore(chain, mark).toString() + mark;
    logLine(u"strAfter : %@", strAfter);
    logLine(u"strBefore : %@", strBefore);
    // The rest begins at the first comma of the whole chain, which is the one after the
    // value only where "setdar=" comes first. Known, and kept.
    const QString rest = strAfter.contains(u',') ? chain.sliced(chain.indexOf(u',')) : QString();
    result[at] = strBefore + newValue + rest;
    return result;
}

namespace
{

/// ffmpeg names a filter by itself, or by its place in a parsed chain.
bool isKeyFrameTrace(const QString &line)
{
    return (line.contains(u"[showinfo ") || line.contains(u"[Parsed_showinfo_")) &&
           line.contains(u" iskey:1 ");
}

} // namespace

float showinfoIntra(const QString &report)
{
    QString first;
    for (const QString &line : reportLines(report)) {
        if (!isKeyFrameTrace(line))
            continue;
        logDebug(u"showinfo intra      : %@", line);
        const QString time = textBefore(textAfter(line, u" pts_time:"), u" ").toString();
        // Compared as texts: "10.2" comes before "9.5".
        if (first.isNull() || time.compare(first, Qt::CaseInsensitive) < 0)
            first = time;
    }
    return str2Float(first);
}

} // namespace vignar
