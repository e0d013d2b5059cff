#pragma once

#include "classShared/sourceDico.h"

#include <QStringList>

#include <map>
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
};

/// The quick form of the passes of one source, for so many processes at once: only intra
/// pictures are decoded, several instants a process. Passes that do not select intra
/// pictures are in none of the runs.
std::vector<FastRun> intraRuns(const PassMap &passes, const SourceDico &source, int processes);

/// Runs that decode a stretch of the source once for several of the passes, which are
/// those that the intra pictures have left without a picture. Each leaves the picture of
/// its plain pass or, as a substitute, that of the pass free to take any picture. Only
/// passes that stand so close that this is cheaper than one run each are in the runs.
std::vector<FastRun> stretchRuns(const PassMap &passes);

} // namespace vignar
