#include "analysis/ffProbeRuns.h"
#include "analysis/ffProbes.h"
#include "analysis/mpeginfoFunction.h"
#include "analysis/sourceAnalysis.h"

namespace vignar
{

AnalysisReaders systemReaders(MovieFramework *movieFramework)
{
    return {
        .movieFramework = movieFramework,
        .mpegInfoDico = &mpeginfoFunction::mpegInfoDico,
        .isFfmpegVsync = [](const QString &path,
                            const QString &report) { return isFfmpegVsync(path, report); },
        .ptsDtsOffsetMs = &ptsDtsOffsetMs,
        .idet = &ffVfIdet,
        .durationM2v = &durationM2v,
        .durationOfHead = &durationOfHead,
    };
}

} // namespace vignar
