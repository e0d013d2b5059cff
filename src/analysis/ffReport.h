#pragma once

#include "classShared/sourceDico.h"

#include <QStringList>

#include <optional>

namespace vignar
{

/// ffInfos(): the properties of a source from ffmpeg's report on it. A report that
/// holds "Input #" is parsed as it stands; else ffmpeg is run on the source (blocking).
/// Nothing without a usable report and source. The duration is in whole seconds; one of less
/// than a second has hundredths.
std::optional<Dico> ffInfos(const QString &srcPath, const QString &report);

/// The parsing half of ffInfos(): pure, nothing when the text holds no "Input #".
///
/// Video streams are numbered in the order of the report; which of several the source is shown
/// by, and hence v0 of its record, is decided later (pictureStream.h). Pictures that are merely
/// attached to the source ("(attached pic)", such as a cover) are numbered after every real
/// video stream; where there is none they begin at v1. ffmpeg turns the frames of a source with a
/// display matrix, so width, height and aspect are those of the turned picture (Keys::v_rotation);
/// a "rotate" tag without a matrix is not followed, as ffmpeg does not follow it.
std::optional<Dico> parseFfReport(const QString &report);

/// Start times of the chapters in seconds, those closer than 20 s to the one kept
/// before dropped; nothing when there are none.
std::optional<QList<double>> ffChapters(const QString &report);

/// The flat keys of ffInfos() regrouped: "v", "a", "s" to stream number to properties;
/// nothing when there is no stream.
std::optional<Dico> ffStreamId(const Dico &infos);

/// False for an empty text and for one that holds one of ffmpeg's failure phrases.
bool isFfmpegSuccess(const QString &report);

/// The report with every mention of the source's own path taken out, so that a name
/// such as "error 1.mp4" cannot pass for a failure.
QString withoutSourcePath(const QString &report, const QString &srcPath);

/// The report without the texts that ffmpeg quotes from inside the source (titles,
/// comments), so that "Trial and error 2" cannot pass for a failure either. For the
/// search of messages only: what is left is not to be parsed.
QString withoutMetadata(const QString &report);

/// A copy of the argument list in which the value of "setdar=" in the filter after
/// "-vf" is replaced.
QStringList ffReplaceSetdar(const QStringList &arguments, const QString &newValue);

/// The first, in text order, of the key frame times in a showinfo trace; 0 when none.
float showinfoIntra(const QString &report);

} // namespace vignar
