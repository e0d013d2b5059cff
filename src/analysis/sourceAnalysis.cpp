#include "analysis/sourceAnalysis.h"

#include "analysis/durationRule.h"
#include "analysis/durationSettling.h"
#include "analysis/ffReport.h"
#include "analysis/ffReportVerdicts.h"
#include "analysis/fieldOrder.h"
#include "analysis/mediaClasses.h"
#include "analysis/mergeRules.h"
#include "analysis/pictureStream.h"
#include "analysis/streamKeys.h"
#include "classShared/files.h"
#include "classShared/lineLog.h"
#include "classShared/numbers.h"
#include "classShared/paths.h"
#include "settings/stringTables.h"
#include "tasks/workFolder.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace vignar
{
namespace
{

/// Longest name, without its extension, of what is made from a source.
constexpr int longestName = 23;
constexpr int testPictureWidth = 160;
constexpr float assumedAspect = 1.77F;

QString destinationName(const QString &srcPath)
{
    QString name = QFileInfo(srcPath).completeBaseName();
    name.replace(u'.', u'_');
    name.truncate(longestName);
    // A character outside the basic plane must not be cut in half.
    if (!name.isEmpty() && name.back().isHighSurrogate())
        name.chop(1);
    return name;
}

/// The movie framework may know the size of the movie alone.
void completeSize(Dico &record)
{
    const bool isStated = record.contains(Keys::v_width(0)) && record.contains(Keys::v_height(0));
    const auto width = read(record, Keys::w_width);
    const auto height = read(record, Keys::w_height);
    if (isStated || !width || !height)
        return;
    write(record, Keys::v_width, 0, *width);
    write(record, Keys::v_height, 0, *height);
}

/// Why a record does not do; a null text where it does. A picture without a size is no use:
/// any size that were assumed would squash it.
QString missingPicture(const Dico &record)
{
    if (read(record, Keys::v_width, 0).value_or(0) > 0 &&
        read(record, Keys::v_height, 0).value_or(0) > 0)
        return {};
    return record.contains(Keys::v_codec(0)) ? u"V_reason_noThumbnail"_s : u"V_reason_noPicture"_s;
}

/// Takes out what merely says that there is nothing to say.
void removeNone(Dico &record)
{
    record.removeIf([](const Dico::iterator &entry) {
        return entry.key().endsWith(u"_codec") && entry->toString() == u"none";
    });
}

QString videoCodec(const Dico &dico)
{
    return read(dico, Keys::v_codec, 0).value_or(QString()).toLower();
}

/// The analysis of one source: its steps, in the order of analyse(), and the two verdicts
/// that they reach on the way.
class SourceAnalysis
{
public:
    SourceAnalysis(const AnalysisInput &input, const AnalysisReaders &readers)
        : m_input(input),
          m_readers(readers),
          m_extension(QFileInfo(input.srcPath).suffix().toLower()),
          m_report(withoutSourcePath(input.report, input.srcPath)),
          m_isSkipQt(readers.movieFramework == nullptr)
    {
    }

    Result<SourceDico> analyse();

private:
    bool isRedirector() const;
    void readMpeg();
    void readFfmpegReport();
    void settlePictureStream();
    void judgeReport();
    void judgeMovieFramework();
    void inspectMovie();
    void merge();
    void judgeChosenCodec();
    void settleDuration();
    void correctFields();
    void judgeProtectedCodec();
    void warnOfLostSound() const;
    void testMovieDecoding();
    void chooseDecoder();
    void nameDestination();

    std::optional<QString> drmKey() const;
    double measureOnExtract() const;
    /// The duration in the record is the one that ffmpeg guessed.
    bool isGuessedDuration() const;
    void skipFfmpeg(const QString &line);
    void skipQt(const QString &line);

    const AnalysisInput &m_input;
    const AnalysisReaders &m_readers;
    const QString m_extension;
    /// The report without the source's path, which may hold ffmpeg's own words.
    const QString m_report;
    ReaderDicos m_dicos;
    Dico m_record;
    bool m_isMpegReaderFailed = false;
    bool m_isDurationGuessed = false;
    bool m_isSkipFfmpeg = false;
    bool m_isSkipQt = false;
};

Result<SourceDico> SourceAnalysis::analyse()
{
    if (!pathExists(m_input.srcPath))
        return Failure{localised(u"V_reason_missing"_s)};
    if (isRedirector())
        return Failure{localised(u"V_reason_asx"_s)};
    readMpeg();
    readFfmpegReport();
    judgeReport();
    if (!m_input.fields.isEmpty())
        write(m_dicos.ff, Keys::v_fields, 0, m_input.fields);
    judgeMovieFramework();
    inspectMovie();
    merge();
    judgeChosenCodec();
    settleDuration();
    correctFields();
    judgeProtectedCodec();
    warnOfLostSound();
    testMovieDecoding();
    if (m_isSkipQt && m_isSkipFfmpeg) {
        logLine(u"analyseSrc          :-( isSkipQt && isSkipFfmpeg");
        return Failure{localised(unreadableReason(m_report))};
    }
    completeSize(m_record);
    if (const QString reason = missingPicture(m_record); !reason.isNull())
        return Failure{localised(reason)};
    removeNone(m_record);
    chooseDecoder();
    nameDestination();
    return m_record;
}

bool SourceAnalysis::isRedirector() const
{
    if (m_extension != u"asx")
        return false;
    const QString text = filled(u"%@ \n\n( '.asx' = Advanced Stream redirector \n"
                                "'.asf' = Advanced Streaming Format \n"
                                "'.wmv' = Windows Media Video )",
                                localised(u"D_videocodec_asx2"_s));
    logLine(u"%@ %@", localised(u"D_videocodec_asx1"_s), text);
    return true;
}

void SourceAnalysis::readMpeg()
{
    if (m_extension == u"evo")
        return;
    if (m_readers.mpegInfoDico)
        m_dicos.mp = m_readers.mpegInfoDico(m_input.srcPath).value_or(Dico());
    m_isMpegReaderFailed = m_dicos.mp.isEmpty();
}

void SourceAnalysis::readFfmpegReport()
{
    const auto infos = ffInfos(m_input.srcPath, m_report);
    if (!infos)
        m_isSkipFfmpeg = true;
    if (!infos || infos->isEmpty())
        return;
    m_dicos.ff = *infos;
    settlePictureStream();
    // Such a bit rate is that of a field in the stream, not of the file.
    m_isDurationGuessed = withoutMetadata(m_report).contains(u"Estimating duration from bitrate");
    if (m_isDurationGuessed)
        remove(m_dicos.ff, Keys::w_bitrate);
    completeFromDecoded(m_dicos.ff, m_input.picture, m_report);
    if (m_readers.ptsDtsOffsetMs)
        m_dicos.ff.insert(m_readers.ptsDtsOffsetMs(m_report).value_or(Dico()));
    if (const auto chapters = ffChapters(m_report))
        write(m_dicos.ff, Keys::chapters, QVariantList(chapters->cbegin(), chapters->cend()));
}

void SourceAnalysis::settlePictureStream()
{
    if (!contains(m_dicos.ff, Keys::w_videos))
        return;
    const QList<int> streams = videoStreams(m_report);
    if (!streams.isEmpty())
        putFirst(streams.constFirst(), m_dicos.ff);
    // The MPEG reader describes the stream whose header it meets first, whichever that is.
    m_dicos.mp.removeIf([](const auto &entry) { return entry.key().startsWith(u'v'); });
}

void SourceAnalysis::judgeReport()
{
    const QString report = withoutMetadata(m_report);
    if (m_readers.isFfmpegVsync && m_readers.isFfmpegVsync(m_input.srcPath, report))
        logLine(u"isFfmpegVsync       :-( YES");
    for (const QString &oddity :
         {u"edit list not starting at 0"_s, u"error, non monotone timestamps"_s}) {
        if (!report.contains(oddity, Qt::CaseInsensitive))
            continue;
        logLine(u"%@", oddity);
        if constexpr (isVerbose())
            m_readers.notify({m_input.srcPath, oddity, AlertStyle::warning, 30});
        break;
    }
    switch (reportVerdict(report)) {
    case ReportVerdict::usable:
        break;
    case ReportVerdict::decodesTooLittle:
        skipFfmpeg(u"isSkipFfmpeg        :-( YES (<-dec)"_s);
        break;
    case ReportVerdict::notCompliant:
        skipFfmpeg(u"isSkipFfmpeg      :-( YES (<-not compliant)"_s);
        break;
    }
}

std::optional<QString> SourceAnalysis::drmKey() const
{
    for (auto entry = m_dicos.ff.cbegin(); entry != m_dicos.ff.cend(); ++entry) {
        if (entry.key().endsWith(u"_codec") && isDrmCodec(entry->toString()))
            return entry.key();
    }
    return std::nullopt;
}

void SourceAnalysis::judgeMovieFramework()
{
    if (const auto key = drmKey()) {
        logLine(u"dicoContainsItunesDR:-( DRM protected file (%@=%@)", *key,
                m_dicos.ff.value(*key));
        skipQt(u"isSkipQt            :-( DRM protected file"_s);
    }
    if (readStr(m_dicos.ff, Keys::wrapper) == u"mpegts")
        skipQt(u"isSkipQt            :-( MPEG-TS"_s);
    if (isMpegExtension(m_extension) && !m_isMpegReaderFailed)
        m_isSkipQt = true;
}

void SourceAnalysis::inspectMovie()
{
    if (m_isSkipQt)
        return;
    m_dicos.qt = m_readers.movieFramework->inspect(m_input.srcPath);
    if (!m_dicos.qt.contains(Keys::v_height(0)) && !contains(m_dicos.qt, Keys::w_height))
        skipQt(u"isSkipQt            :-( movie without video|track.size.height ([av|qt])"_s);
}

void SourceAnalysis::merge()
{
    MovieFramework *framework = m_readers.movieFramework;
    MergeContext context;
    context.extension = m_extension;
    context.bundleDuration = bundleDuration(m_input.srcPath);
    context.frameRate.extension = m_extension;
    context.frameRate.isMpegReaderFailed = m_isMpegReaderFailed;
    context.frameRate.isMovieFrameworkUsable = !m_isSkipQt;
    if (!m_isSkipQt) {
        context.frameRate.measureMovie = [this, framework] {
            return framework->measureFrameRate(m_input.srcPath,
                                               MovieFramework::RateMeasurement::normal);
        };
        context.frameRate.measureExtract = [this] { return measureOnExtract(); };
    }
    m_record = mergedRecord(m_dicos, context);
}

double SourceAnalysis::measureOnExtract() const
{
    const QString extract = QDir(workFolder()).filePath(u"extrait.mov"_s);
    if (!m_readers.movieFramework->writeExtract(m_input.srcPath, extract))
        return 0;
    const double rate = m_readers.movieFramework->measureFrameRate(
        extract, MovieFramework::RateMeasurement::extract);
    rmCocoa(extract);
    return rate;
}

void SourceAnalysis::judgeChosenCodec()
{
    const QString codec = videoCodec(m_record);
    if (isIndeoCodec(codec))
        skipFfmpeg(u"isSkipFfmpeg        ? YES (<-codec 1)"_s);
    if (codec == u"3ivx")
        skipFfmpeg(u"isSkipFfmpeg        ? YES (<-codec 2)"_s);
    if (isDvCodec(codec) && !contains(m_record, StreamKeys::w0_chroma))
        write(m_record, StreamKeys::w0_chroma, dvChroma(codec));
    if (codec == u"mpeg2video" && !m_isSkipQt && !m_readers.movieFramework->hasMpeg2Playback())
        m_isSkipQt = true;
}

bool SourceAnalysis::isGuessedDuration() const
{
    return m_isDurationGuessed && !contains(m_dicos.mp, Keys::w_duration) &&
           read(m_record, Keys::w_duration) == read(m_dicos.ff, Keys::w_duration);
}

void SourceAnalysis::settleDuration()
{
    DurationContext context;
    context.srcPath = m_input.srcPath;
    context.notify = m_readers.notify;
    context.isUsable = !m_isSkipFfmpeg || !m_isSkipQt;
    context.hasMpeg2Demultiplexer =
        m_readers.movieFramework && m_readers.movieFramework->hasMpeg2Demultiplexer();
    context.isGuess = isGuessedDuration();
    if (m_readers.durationM2v && !m_isSkipFfmpeg)
        context.measure = [this] { return m_readers.durationM2v(m_input.srcPath); };
    if (m_readers.durationOfHead && !m_isSkipFfmpeg)
        context.measureHead = [this](qint64 bytes) {
            return m_readers.durationOfHead(m_input.srcPath, bytes);
        };
    vignar::settleDuration(m_record, context);
}

void SourceAnalysis::correctFields()
{
    FieldOrderContext context;
    context.isMovieFrameworkOnly = !m_isSkipQt && m_isSkipFfmpeg;
    if (m_readers.idet)
        context.measure = [this] { return m_readers.idet(m_input.srcPath); };
    correctFieldOrder(m_record, context);
}

void SourceAnalysis::judgeProtectedCodec()
{
    const QString codec = videoCodec(m_record);
    if (isDrmCodec(codec) || codec == u"none")
        m_isSkipFfmpeg = true;
}

void SourceAnalysis::warnOfLostSound() const
{
    const QString codec = videoCodec(m_record);
    const bool isMpegVideo = codec == u"mpeg1video" || codec == u"mpeg2video";
    if (m_record.contains(Keys::a_codec(0)) || !isMpegVideo ||
        isMpegElementaryExtension(m_extension) || !m_isSkipFfmpeg || m_isSkipQt)
        return;
    m_readers.notify(lostSoundNotice(m_input.srcPath));
}

void SourceAnalysis::testMovieDecoding()
{
    if (m_isSkipQt)
        return;
    if (m_input.testPictureFolder.isEmpty()) {
        m_isSkipQt = !m_readers.movieFramework->canDecode(m_input.srcPath);
        return;
    }
    const auto dar = read(m_record, Keys::v_dar, 0);
    const float ratio = dar ? fractionStr2Float(*dar) : assumedAspect;
    const QSize size(testPictureWidth, int(testPictureWidth / ratio));
    m_isSkipQt = !m_readers.grabTestFrame ||
                 !m_readers.grabTestFrame(m_input.srcPath, m_input.testPictureFolder, size);
}

void SourceAnalysis::chooseDecoder()
{
    const Decoder decoder = m_isSkipFfmpeg ? quickTimeDecoder : ffmpegDecoder;
    write(m_record, Keys::dec, int(decoder));
    if (m_isSkipQt)
        write(m_record, Keys::decSkip, int(quickTimeDecoder));
    else if (m_isSkipFfmpeg)
        write(m_record, Keys::decSkip, int(ffmpegDecoder));
    logLine(u"Default decoder     : %@",
            decoder == quickTimeDecoder ? u"quicktime"_s : u"ffmpeg"_s);
}

void SourceAnalysis::nameDestination()
{
    write(m_record, Keys::dstFolderNameStr, fichier_dirname(m_input.srcPath));
    write(m_record, Keys::dstFileNameStr, destinationName(m_input.srcPath));
}

void SourceAnalysis::skipFfmpeg(const QString &line)
{
    logLine(u"%@", line);
    m_isSkipFfmpeg = true;
}

void SourceAnalysis::skipQt(const QString &line)
{
    logLine(u"%@", line);
    m_isSkipQt = true;
}

} // namespace

Result<SourceDico> analyseSource(const AnalysisInput &input, const AnalysisReaders &readers)
{
    return SourceAnalysis(input, readers).analyse();
}

} // namespace vignar
