#pragma once

#include "analysis/decodedPicture.h"
#include "analysis/movieFramework.h"
#include "analysis/sourceNotices.h"
#include "classShared/result.h"

#include <QSize>

#include <functional>

namespace vignar
{

/// What the analysis of one source is given.
struct AnalysisInput {
    QString srcPath;
    /// ffmpeg's report on the source.
    QString report;
    /// Localised field order measured on decoded frames; empty: not known.
    QString fields;
    /// Folder for the movie framework's test picture; empty: only its decodability check.
    QString testPictureFolder;
    /// What the decoded frames themselves are like.
    DecodedPicture picture = {};
};

/// The readers and probes that the analysis consults beside ffmpeg's report. An empty
/// function counts as a reader that failed, or a probe without an answer.
struct AnalysisReaders {
    MovieFramework *movieFramework = nullptr;
    /// Writes the movie's first frame into the folder, through the framework.
    std::function<bool(const QString &path, const QString &folder, const QSize &size)>
        grabTestFrame;
    std::function<std::optional<Dico>(const QString &path)> mpegInfoDico;
    std::function<bool(const QString &path, const QString &report)> isFfmpegVsync;
    std::function<std::optional<Dico>(const QString &report)> ptsDtsOffsetMs;
    std::function<QString(const QString &path)> idet;
    std::function<int(const QString &path)> durationM2v;
    std::function<int(const QString &path, qint64 bytes)> durationOfHead;
    /// What the user is to be told of the source.
    NoticeOutlet notify = &showNotice;
};

/// The MPEG reader and the probes that run ffmpeg, beside the platform's framework, which
/// may be null and else outlives the readers.
AnalysisReaders systemReaders(MovieFramework *movieFramework);

/// Reconciles the three readers into the record of one source, or says why it cannot
/// be read. On any thread where the readers, and what is notified, may be called there.
Result<SourceDico> analyseSource(const AnalysisInput &input, const AnalysisReaders &readers);

} // namespace vignar
