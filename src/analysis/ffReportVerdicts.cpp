#include "analysis/ffReportVerdicts.h"

#include "analysis/ffReport.h"
#include "analysis/ffReportStreams.h"
#include "analysis/reportText.h"
#include "classShared/lineLog.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <optional>

using namespace Qt::StringLiterals;

namespace vignar
{
namespace
{

constexpr std::array failurePhrases{
    "unknown format"_L1,           "unsupported video codec"_L1,
    "operation not permitted"_L1,  "error "_L1,
    "i/o error occured"_L1,        "error reading header:"_L1,
    "error while opening file"_L1,
};

constexpr auto decodeError = "Error while decoding stream"_L1;
constexpr std::array notCompliantPhrases{
    "Segmentation fault"_L1,
    "Could not write header for output file"_L1,
    "swScaler: Unknown format is not supported"_L1,
    "Cannot allocate temp picture"_L1,
};

/// Fewer pictures than this are too few after a decoding error.
constexpr int enoughPictures = 25;

/// Pictures written according to the last progress line; nothing when there is none.
std::optional<int> writtenPictures(const QString &report)
{
    const QStringList lines = reportLines(report);
    for (auto line = lines.crbegin(); line != lines.crend(); ++line) {
        if (!line->contains(u"frame="))
            continue;
        const QStringView count = textAfter(*line, u"frame=").trimmed();
        if (isPlainInt(textBefore(count, u" ")))
            return leadingInt(count);
    }
    return std::nullopt;
}

/// ffmpeg's log writes "?" for the control characters that are not white space.
QString asLogged(QString text)
{
    static const QRegularExpression control(u"[\\x01-\\x07\\x0e-\\x1f]"_s);
    return text.replace(control, u"?"_s);
}

bool isProtectedVideo(const QString &line)
{
    constexpr std::array tags{"(drmi / "_L1, "(drms / "_L1, "(encv / "_L1};
    const StreamType type = streamType(line);
    return type == StreamType::video &&
           std::ranges::any_of(tags, [&line](QLatin1String tag) { return line.contains(tag); });
}

} // namespace

QString unreadableReason(const QString &report)
{
    const QStringList lines = reportLines(report);
    const bool isProtected =
        std::ranges::any_of(lines, isProtectedVideo) ||
        !lines.filter(u"DRM protected stream detected"_s).filter(u"["_s).isEmpty();
    return isProtected ? u"V_reason_protected"_s : u"V_reason_unreadable"_s;
}

bool isFfmpegSuccess(const QString &report)
{
    const QString text = report.toLower();
    const bool isSuccess =
        !text.isEmpty() && std::ranges::none_of(failurePhrases, [&text](QLatin1String phrase) {
            return text.contains(phrase);
        });
    logLine(u"isFfmpegSuccess     :-%@", isSuccess ? u")"_s : u"("_s);
    return isSuccess;
}

ReportVerdict reportVerdict(const QString &report)
{
    if (report.contains(decodeError, Qt::CaseInsensitive)) {
        const auto written = writtenPictures(report);
        if (!written)
            return ReportVerdict::notCompliant;
        const bool isTooLittle = *written < enoughPictures && *written != probedPictures;
        return isTooLittle ? ReportVerdict::decodesTooLittle : ReportVerdict::usable;
    }
    const bool isNotCompliant =
        std::ranges::any_of(notCompliantPhrases, [&report](QLatin1String phrase) {
            return report.contains(phrase, Qt::CaseInsensitive);
        });
    return isNotCompliant ? ReportVerdict::notCompliant : ReportVerdict::usable;
}

QString withoutSourcePath(const QString &report, const QString &srcPath)
{
    QString text = report;
    if (srcPath.isEmpty())
        return text;
    text.remove(srcPath);
    text.remove(asLogged(srcPath));
    // The bare name is taken out only where quotes show that it is one: a file may be
    // called "e", and its report must keep its letters.
    const QString name = QFileInfo(srcPath).fileName();
    for (const QString &quoted : {u'\'' + name + u'\'', u'"' + name + u'"'})
        text.remove(quoted);
    return text;
}

QString withoutMetadata(const QString &report)
{
    // What ffmpeg says itself begins at the margin, or two blanks from it; what it quotes
    // from the source stands farther in.
    QStringList lines = reportLines(report);
    lines.removeIf([](const QString &line) { return line.startsWith(u"    "); });
    return lines.join(u'\n');
}

} // namespace vignar
