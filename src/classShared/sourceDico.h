#pragma once

#include "classShared/keys.h"

#include <QVariantList>

namespace vignar
{

/// Everything known of one source: text keys to values. Durations and offsets are
/// seconds, bit rates kb/s, frame rates frames per second, aspect ratios texts with
/// a colon. A key that the analysis could not determine is absent.
using SourceDico = Dico;

/// A frame rate of this value means: unknown.
inline constexpr double unknownFrameRate = 666.0;

/// The values of Keys::dec and Keys::decSkip.
enum Decoder { quickTimeDecoder = 0, ffmpegDecoder = 1 };

/// The columns and the look of a sheet, as stored under Keys::out.
enum Layout { bigLayout = 0, medLayout = 1, minLayout = 2, mixLayout = 3 };

/// The keys of the dictionaries that travel between the folders, each spelled like
/// its text.
namespace Keys
{

// The source record.
inline constexpr Key<QString> srcPathStr{"srcPathStr"};
inline constexpr Key<QString> imgPathStr{"imgPathStr"};
inline constexpr Key<int> intraFailure{"intraFailure"};
inline constexpr Key<double> w_duration{"w_duration"};
inline constexpr Key<int> w_bitrate{"w_bitrate"};
inline constexpr Key<double> w_offset{"w_offset"};
inline constexpr Key<int> w_width{"w_width"};
inline constexpr Key<int> w_height{"w_height"};
inline constexpr Key<double> w_dar{"w_dar"};
inline constexpr Key<int> w_nsav{"w_nsav"};
inline constexpr Key<int> w_qtasync{"w_qtasync"};
inline constexpr Key<QString> wrapper{"wrapper"};
/// How many video streams there are to choose from, attached pictures not counted; absent where
/// there is no choice.
inline constexpr Key<int> w_videos{"w_videos"};
/// What the container says about its contents.
inline constexpr Key<QString> w_comment{"w_comment"};
inline constexpr Key<QVariantList> chapters{"chapters"};
inline constexpr Key<double> intraOffset{"intraOffset"};
inline constexpr Key<int> dec{"dec"};
inline constexpr Key<int> decSkip{"decSkip"};
inline constexpr Key<int> ff_vsync{"ff_vsync"};
inline constexpr Key<int> a0_force{"a0_force"};
/// Instants that the user has chosen: plan to thumbnail index to seconds; only
/// sheet/chosenInstants.h looks inside.
inline constexpr Key<Dico> chosenInstants{"chosenInstants"};
inline constexpr Key<QString> dstFolderNameStr{"dstFolderNameStr"};
inline constexpr Key<QString> dstFileNameStr{"dstFileNameStr"};

inline constexpr StreamKey<int> v_id{'v', "id"};
inline constexpr StreamKey<QString> v_lang{'v', "lang"};
inline constexpr StreamKey<QString> v_codec{'v', "codec"};
inline constexpr StreamKey<int> v_bitrate{'v', "bitrate"};
inline constexpr StreamKey<double> v_fps{'v', "fps"};
inline constexpr StreamKey<double> v_tbc{'v', "tbc"};
inline constexpr StreamKey<int> v_width{'v', "width"};
inline constexpr StreamKey<int> v_height{'v', "height"};
inline constexpr StreamKey<QString> v_par{'v', "par"};
inline constexpr StreamKey<QString> v_dar{'v', "dar"};
inline constexpr StreamKey<QString> v_fields{'v', "fields"};
inline constexpr StreamKey<QString> v_chroma{'v', "chroma"};
/// Clockwise turn, in degrees (90, 180, 270), that the metadata asks a player to
/// make; width, height and aspect in the record are those of the turned picture.
inline constexpr StreamKey<int> v_rotation{'v', "rotation"};
/// Colour description, in ffmpeg's words ("bt709", "smpte2084"); range "tv" or "pc".
inline constexpr StreamKey<QString> v_transfer{'v', "transfer"};
inline constexpr StreamKey<QString> v_primaries{'v', "primaries"};
inline constexpr StreamKey<QString> v_matrix{'v', "matrix"};
inline constexpr StreamKey<QString> v_range{'v', "range"};
/// ffmpeg's name of the pixel format alone ("yuv420p10le"), which v_chroma often is not.
inline constexpr StreamKey<QString> v_pixelFormat{'v', "pixelFormat"};
inline constexpr StreamKey<int> a_id{'a', "id"};
inline constexpr StreamKey<QString> a_lang{'a', "lang"};
inline constexpr StreamKey<QString> a_codec{'a', "codec"};
inline constexpr StreamKey<int> a_bitrate{'a', "bitrate"};
inline constexpr StreamKey<int> a_rate{'a', "rate"};
inline constexpr StreamKey<int> a_channels{'a', "channels"};
inline constexpr StreamKey<double> a_offset{'a', "offset"};
inline constexpr StreamKey<int> s_id{'s', "id"};
inline constexpr StreamKey<QString> s_lang{'s', "lang"};
inline constexpr StreamKey<QString> s_title{'s', "lang+"};
inline constexpr StreamKey<QString> s_codec{'s', "codec"};

// One row of the batch list, where its values travel.
inline constexpr Key<int> out{"out"};
inline constexpr Key<int> dpi{"dpi"};

/// The number from which a name for the sheet is sought; absent: 1, the name without one.
inline constexpr Key<int> sheetNumber{"sheetNumber"};

// The working record of the row being made ("processEncDico").
inline constexpr Key<QString> dateCreation{"dateCreation"};
inline constexpr Key<QString> dstPathStr{"dstPathStr"};
inline constexpr Key<QString> dstPathStrMultimediaHd{"dstPathStrMultimediaHd"};
inline constexpr Key<QString> purgePathStr1{"purgePathStr1"};
inline constexpr Key<double> durationDouble{"durationDouble"};
inline constexpr Key<int> thNumberInt{"thNumberInt"};
inline constexpr Key<int> thNumberAuto{"thNumberAuto"};
inline constexpr Key<int> thDerush{"thDerush"};
inline constexpr Key<int> thDerushInterval{"thDerushInterval"};
/// Present: the passes tell when their pictures are shown.
inline constexpr Key<int> thTrueTimecode{"thTrueTimecode"};
inline constexpr Key<Dico> appvgThFf{"appvgThFf"};
inline constexpr Key<Dico> appvgThQt{"appvgThQt"};
inline constexpr Key<Dico> appvgDisplay{"appvgDisplay"};
inline constexpr Key<int> encDeb{"encDeb"};
inline constexpr Key<int> encV{"encV"};
inline constexpr Key<int> encQtEnc{"encQtEnc"};
inline constexpr Key<QString> normalizedVolumedetect{"normalizedVolumedetect"};
inline constexpr Key<QString> normalized{"normalized"};

// The display dictionary of a sheet ("appvgDisplay").
inline constexpr Key<QString> name{"name"};
inline constexpr Key<QString> location{"location"};
inline constexpr Key<QString> date{"date"};
inline constexpr Key<QString> duration{"duration"};
inline constexpr Key<QString> vIdentity{"vIdentity"};
inline constexpr Key<QString> poids{"poids"};
inline constexpr Key<QString> essence{"essence"};
inline constexpr Key<QString> comment{"comment"};
inline constexpr Key<Dico> timecode{"timecode"};
inline constexpr Key<int> wTh{"wTh"};
inline constexpr Key<int> hTh{"hTh"};
inline constexpr Key<QStringList> th{"th"};
inline constexpr Key<int> bigMedMinMix{"bigMedMinMix"};
inline constexpr Key<QString> borderColor{"borderColor"};
inline constexpr Key<double> borderSize{"borderSize"};
inline constexpr Key<QString> bkgColor{"bkgColor"};
inline constexpr Key<int> bannerDisplayNo{"bannerDisplayNo"};
/// Width of the sheet in pixels; absent: 1280.
inline constexpr Key<int> pageWidth{"pageWidth"};

} // namespace Keys

} // namespace vignar
