#pragma once

#include "analysis/sourceNotices.h"
#include "classShared/sourceDico.h"

#include <functional>

namespace vignar
{

/// What speaks for the duration of a source beside its merged record.
struct DurationContext {
    QString srcPath;
    /// One of the decoders can read the source.
    bool isUsable = true;
    bool hasMpeg2Demultiplexer = false;
    /// ffmpeg guessed the stated duration from a bit rate.
    bool isGuess = false;
    /// Reads the stream through and answers its seconds, 1 or below on failure; empty where
    /// that is not possible.
    std::function<int()> measure;
    /// The same, of so many bytes at the beginning.
    std::function<int(qint64 bytes)> measureHead;
    NoticeOutlet notify = &showNotice;
};

/// Gives the record a duration where the readers state none or one that cannot be, and
/// tells the user where it remains a guess.
void settleDuration(Dico &record, const DurationContext &context);

} // namespace vignar
