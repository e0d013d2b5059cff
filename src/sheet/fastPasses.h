#pragma once

#include "classShared/sourceDico.h"

#include <QStringList>

#include <map>
#include <set>
#include <vector>

namespace vignar
{

/// Planned passes: picture number to argument list.
using PassMap = std::map<int, QStringList>;

/// A run of ffmpeg in the place of one or several planned passes. When these passes are
/// exchangeable, and why, is told in docs/decisions/fast-extraction.md.
struct FastRun {
    QStringList arguments;
    /// The numbers of the pictures that it leaves.
    std::vector<int> pictures;
    /// Files that stand in for a picture whose own file is missing at the end of the run;
    /// they are not to be left lying about.
    std::map<int, QString> substitutes;
    /// Pictures of which it is known when they are shown (seconds into the source). The report
    /// tells the time too; a picture of another time is not the one of its pass.
    std::map<int, double> times;
};

struct IntraPlan {
    std::vector<FastRun> runs;
    /// Passes that would find no intra picture, as the container tells.
    std::set<int> without;
    /// How far before its instant (seconds) a pass by itself begins to decode, where the
    /// container tells.
    std::map<int, double> runUps;
};

/// The quick form of the passes of one source, for so many processes at once: only intra
/// pictures are decoded, several instants a process. In none of the runs are passes that do
/// not select intra pictures or would find none, and of H.264 some that are close together.
/// Reads in the source; for any thread.
IntraPlan intraPlan(const PassMap &passes, const SourceDico &source, int processes);

/// True for containers in which times go on and on, so that one who decodes through comes by
/// the same pictures as one who seeks: recordings that were joined begin anew in the middle.
bool isContinuous(const SourceDico &source);

/// Runs that decode a stretch of a continuous source once for several of its passes, which are
/// those that have no quick form or were left without a picture by it. Each leaves the picture
/// of its plain pass or, as a substitute, that of the pass free to take any picture. Only
/// passes that stand so close that this is cheaper than one run each are in the runs.
std::vector<FastRun> stretchRuns(const PassMap &passes, const SourceDico &source,
                                 const std::map<int, double> &runUps = {});

/// True unless the report of a run tells that a picture of it, which its pass was to leave, is
/// shown at another time than is known.
bool isOfItsTime(const FastRun &run, int picture, const QStringList &pass, const QString &report);

} // namespace vignar
