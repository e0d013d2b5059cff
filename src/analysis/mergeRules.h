#pragma once

#include "analysis/frameRateRule.h"
#include "classShared/keys.h"

#include <optional>

namespace vignar
{

/// What the three readers found, with the key scheme of the source record.
struct ReaderDicos {
    /// The MPEG-2 stream reader.
    Dico mp;
    /// ffmpeg's report.
    Dico ff;
    /// The movie framework.
    Dico qt;
};

/// What the rules look at beside the readers' values.
struct MergeContext {
    /// Of the source, in lower case.
    QString extension;
    /// Duration stated by the recording bundle around the source, which wins.
    std::optional<int> bundleDuration;
    FrameRateContext frameRate;
};

/// One record from three: a key that one reader alone holds, or on which all agree, takes
/// that value; the rule of the key's family settles the others. The first video stream's
/// frame rate is always set (unknownFrameRate when not known); the duration is absent when
/// nobody knows it.
Dico mergedRecord(const ReaderDicos &readers, const MergeContext &context);

} // namespace vignar
