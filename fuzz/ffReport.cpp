#include "analysis/ffReport.h"
#include "analysis/ffReportVerdicts.h"
#include "fuzzing.h"

using namespace vignar;
using namespace Qt::StringLiterals;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString report = QString::fromUtf8(bytesOf(data, size));
    if (const auto infos = parseFfReport(report))
        ffStreamId(*infos);
    ffChapters(report);
    isFfmpegSuccess(report);
    reportVerdict(withoutMetadata(withoutSourcePath(report, u"/film/error 1.mp4"_s)));
    ffReplaceSetdar({u"-vf"_s, report}, u"16:9"_s);
    return 0;
}
