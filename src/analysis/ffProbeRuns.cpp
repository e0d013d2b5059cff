#include "analysis/ffProbeRuns.h"

#include "analysis/ffProbes.h"
#include "analysis/ffReport.h"
#include "classShared/files.h"
#include "classShared/lineLog.h"
#include "classShared/paths.h"
#include "settings/stringTables.h"
#include "tasks/toolPlaces.h"
#include "tasks/waitedRun.h"
#include "tasks/workFolder.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace vignar
{
namespace
{

constexpr double idetPassSeconds = 4.0;

/// Null when ffmpeg could not be run.
QString ffmpegText(const QStringList &arguments, std::chrono::milliseconds limit = shortProbeLimit)
{
    return taskArrayWithin(QStringList(ffmpegPath()) + arguments, limit);
}

/// Neither the file's name nor a title in it may pass for an answer.
QString ownWords(const QString &text, const QString &srcPath)
{
    return withoutMetadata(withoutSourcePath(text, srcPath));
}

QStringList toNowhere()
{
    return {u"-f"_s, u"null"_s, u"-y"_s, u"/dev/null"_s};
}

QStringList forced(const QString &format)
{
    return format.isEmpty() ? QStringList() : QStringList{u"-f"_s, format};
}

QString idetPass(const QString &srcPath, double start)
{
    QStringList arguments{u"-loglevel"_s, u"info"_s, u"-ss"_s, filled(u"%.2f", start)};
    arguments << u"-i"_s << srcPath << u"-vf"_s << u"idet"_s << u"-t"_s << u"4"_s << u"-an"_s
              << u"-sn"_s;
    return idetFieldOrder(ownWords(ffmpegText(arguments + toNowhere()), srcPath));
}

/// The whole report. It stays in the work folder while it is judged, for whoever watches
/// the probe.
QString decodedSound(const QString &srcPath, const QString &format)
{
    QStringList arguments = QStringList{u"-loglevel"_s, u"info"_s} + forced(format);
    arguments << u"-i"_s << srcPath << u"-t"_s << u"5"_s << u"-vn"_s << u"-f"_s << u"wav"_s
              << u"-y"_s << u"/dev/null"_s;
    const QString text = ffmpegText(arguments);
    QFile file(workFolder() + u"/ffAudioCodec.txt"_s);
    if (file.open(QIODevice::WriteOnly))
        file.write(text.toUtf8());
    return text;
}

/// input: the options by which ffmpeg is to open the source.
int durationOfInput(const QString &srcPath, const QStringList &input)
{
    if (!pathExists(srcPath))
        return 1;
    const QStringList arguments = input + QStringList{u"-c:v"_s, u"copy"_s, u"-an"_s};
    const QString text =
        ffmpegText(arguments + toNowhere(), std::chrono::milliseconds(blockingRunLimitMs));
    return durationM2vFromText(ownWords(text, srcPath));
}

} // namespace

bool isFfmpegVsync(const QString &srcPath, const QString &report, const QString &forcedFormat)
{
    QString text = report;
    if (text.isEmpty()) {
        QStringList arguments = QStringList{u"-loglevel"_s, u"info"_s} + forced(forcedFormat);
        arguments << u"-i"_s << srcPath << u"-vframes"_s << u"35"_s << u"-vf"_s
                  << u"scale=320:240,format=yuv420p"_s << u"-an"_s;
        text = ownWords(ffmpegText(arguments + toNowhere()), srcPath);
    }
    const bool isVsync = isFfmpegVsyncText(text);
    logLine(u"isFfmpegVsync       : verbose: %@", isVsync ? u"YES"_s : u"NO"_s);
    return isVsync;
}

QString ffVfIdet(const QString &srcPath)
{
    for (int pass = 1; pass <= idetPasses; ++pass) {
        const QString order = idetPass(srcPath, pass * idetPassSeconds);
        if (order.isNull())
            continue;
        const QString name = localised(order, fieldsTable);
        if (pass > 1)
            logVerbose(u"ffVfIdet %ld passes   : %@", pass, name);
        return name;
    }
    return {};
}

int durationM2v(const QString &srcPath)
{
    return durationOfInput(srcPath, {u"-i"_s, srcPath});
}

int durationOfHead(const QString &srcPath, qint64 bytes)
{
    const QString head = u"subfile,,start,0,end,%1,,:%2"_s.arg(QString::number(bytes), srcPath);
    return durationOfInput(srcPath, {u"-protocol_whitelist"_s, u"file,subfile"_s, u"-i"_s, head});
}

bool isFfmpegSuccessAudio(const QString &srcPath)
{
    if (!pathExists(srcPath))
        return false;
    const QString text = decodedSound(srcPath, {});
    bool isSuccess = isFfmpegSuccess(ownWords(text, srcPath));
    if (!isSuccess) {
        if (const QString format = forceFormat(srcPath, text); !format.isNull())
            isSuccess = isFfmpegSuccess(ownWords(decodedSound(srcPath, format), srcPath));
    }
    rmCocoa(workFolder() + u"/ffAudioCodec.txt"_s);
    logLine(u"isFfmpegSuccessAudio:-%@", isSuccess ? u")"_s : u"("_s);
    return isSuccess;
}

QString forceFormat(const QString &srcPath, const QString &report)
{
    const QString fileType =
        taskArrayWithin({u"/usr/bin/file"_s, u"-b"_s, srcPath}, shortProbeLimit);
    const QString format = formatOfFileType(withoutSourcePath(fileType, srcPath));
    return format.isNull() ? forceFormatLite(report) : format;
}

bool isMpegTs(const QString &srcPath, const QString &report)
{
    const QString text = report.isEmpty() ? ffmpegText({u"-i"_s, srcPath}) : report;
    return isMpegTsText(withoutSourcePath(text, srcPath));
}

float ffRevision()
{
    return ffRevisionOfText(taskArrayWithin({ffmpegPath(), u"-version"_s}, shortProbeLimit));
}

} // namespace vignar
