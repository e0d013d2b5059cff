#pragma once

#include "classShared/keys.h"

#include <array>

namespace vignar
{

/// The user's settings; their defaults are in prefDefaults().
namespace Prefs
{

inline constexpr Key<QString> prefDefautDstPathStr{"prefDefautDstPathStr"};
inline constexpr Key<QString> prefSuffix{"prefSuffix"};
/// The fields that name a sheet ("{date} {name}{suffix}"); empty: the source's name and
/// the suffix.
inline constexpr Key<QString> prefNameTemplate{"prefNameTemplate"};
inline constexpr Key<int> prefColor{"prefColor"};
/// The sheet layout: 0 Big, 1 Med, 2 Min, 3 Mix.
inline constexpr Key<int> prefCheckMatrix{"prefCheckMatrix"};
inline constexpr Key<int> prefAlertEnd{"prefAlertEnd"};
/// The sheet format: 0 PDF, 1 JPEG.
inline constexpr Key<int> prefDpi{"prefDpi"};
/// What sheets are instead of JPEG: "", "png" or "webp".
inline constexpr Key<QString> prefSheetFormat{"prefSheetFormat"};
inline constexpr Key<int> prefComputerWidthAuto{"prefComputerWidthAuto"};
inline constexpr Key<int> prefComputerWidth{"prefComputerWidth"};
inline constexpr Key<QString> pageBkgColor{"pageBkgColor"};
inline constexpr Key<QString> prefBorderColor{"prefBorderColor"};
inline constexpr Key<double> prefBorderSize{"prefBorderSize"};
inline constexpr Key<int> prefLimitBig{"prefLimitBig"};
inline constexpr Key<int> prefLimitMed{"prefLimitMed"};
inline constexpr Key<int> prefLimitMin{"prefLimitMin"};
inline constexpr Key<int> prefLimitMix{"prefLimitMix"};
inline constexpr Key<int> prefLimitAuto{"prefLimitAuto"};
inline constexpr Key<int> prefDerush{"prefDerush"};
inline constexpr Key<int> prefDerushInterval{"prefDerushInterval"};
inline constexpr Key<int> prefTimecode{"prefTimecode"};
/// 1: the timecode is that of the picture that was found, not of the planned instant.
inline constexpr Key<int> prefTrueTimecode{"prefTrueTimecode"};
/// 1: a thumbnail of one flat colour is taken again a little later.
inline constexpr Key<int> prefAvoidBlank{"prefAvoidBlank"};
inline constexpr Key<int> pageName{"pageName"};
inline constexpr Key<int> pageLocation{"pageLocation"};
inline constexpr Key<int> pageDate{"pageDate"};
inline constexpr Key<int> pageDuration{"pageDuration"};
inline constexpr Key<int> pageVIdentity{"pageVIdentity"};
inline constexpr Key<int> pagePoids{"pagePoids"};
inline constexpr Key<int> pageEssence{"pageEssence"};
/// A line with a comment: the text, or that of the source where the text is empty.
inline constexpr Key<int> pageComment{"pageComment"};
inline constexpr Key<QString> pageCommentText{"pageCommentText"};
inline constexpr Key<int> prefMultimediaHd{"prefMultimediaHd"};
inline constexpr Key<int> prefDerushNoMultimediaHd{"prefDerushNoMultimediaHd"};
/// 1: a sprite picture and its WebVTT cues, for the time bars of web players.
inline constexpr Key<int> prefWebVtt{"prefWebVtt"};
inline constexpr Key<int> update{"update"};
inline constexpr Key<int> rateDeclined{"rateDeclined"};
inline constexpr Key<int> ratedVersion{"ratedVersion"};
inline constexpr Key<double> rateVersion{"rateVersion"};
/// A demultiplexer that the analysis forces; empty: none. No control shows it.
inline constexpr Key<QString> ffFileForceFormatStr{"ffFileForceFormatStr"};
/// 1: the planned passes run as they stand, one after another, instead of in their quick
/// form. No control shows it.
inline constexpr Key<int> prefPlainPasses{"prefPlainPasses"};
/// How many ffmpeg processes take the pictures of a sheet at once; 0: one a core. No control
/// shows it.
inline constexpr Key<int> prefPassProcesses{"prefPassProcesses"};
/// 1: no credit line on the sheet. No control shows it.
inline constexpr Key<int> bannerDisplayNo{"bannerDisplayNo"};

} // namespace Prefs

/// What the two step drivers keep in the store while they run.
namespace RunKeys
{

inline constexpr Key<int> analysisDeb{"analysisDeb"};
inline constexpr Key<int> analysisFfmpeg{"analysisFfmpeg"};
inline constexpr Key<int> analysisFfmpegResult{"analysisFfmpegResult"};
inline constexpr Key<int> analysisFfmpegParse{"analysisFfmpegParse"};
inline constexpr Key<int> analysisMediaInfo{"analysisMediaInfo"};
inline constexpr Key<int> analysisMediaInfoParse{"analysisMediaInfoParse"};
inline constexpr Key<int> analysisDico{"analysisDico"};
inline constexpr Key<int> analysisFin{"analysisFin"};
inline constexpr Key<Dico> analysisSrcPathesDico{"analysisSrcPathesDico"};
inline constexpr Key<QString> analysisSrcPathStr{"analysisSrcPathStr"};
inline constexpr Key<Dico> analysisSrcCurrentDico{"analysisSrcCurrentDico"};
inline constexpr Key<QString> imgPathStr{"imgPathStr"};
inline constexpr Key<int> alertIfIsNotSrcValid{"alertIfIsNotSrcValid"};
inline constexpr Key<QString> encCurrentProcessingFile{"encCurrentProcessingFile"};
inline constexpr Key<Dico> processEncDico{"processEncDico"};
inline constexpr Key<int> replaceFilesCheck{"replaceFilesCheck"};
inline constexpr Key<int> encBatch{"encBatch"};
inline constexpr Key<int> encFin{"encFin"};

/// All of them: a run's own, and none of the user's.
inline constexpr std::array names{
    analysisDeb.text,
    analysisFfmpeg.text,
    analysisFfmpegResult.text,
    analysisFfmpegParse.text,
    analysisMediaInfo.text,
    analysisMediaInfoParse.text,
    analysisDico.text,
    analysisFin.text,
    analysisSrcPathesDico.text,
    analysisSrcPathStr.text,
    analysisSrcCurrentDico.text,
    imgPathStr.text,
    alertIfIsNotSrcValid.text,
    encCurrentProcessingFile.text,
    processEncDico.text,
    replaceFilesCheck.text,
    encBatch.text,
    encFin.text,
};

} // namespace RunKeys

} // namespace vignar
