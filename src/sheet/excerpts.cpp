#include "sheet/excerpts.h"

#include "classShared/format.h"
#include "tasks/waitedRun.h"

#include <QFile>
#include <QHash>
#include <QMutex>
#include <QRegularExpression>

#include <algorithm>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// The first that takes options for the files of a list.
constexpr int firstVersion = 5;
constexpr std::chrono::seconds answerLimit{20};

/// "ffmpeg version 5.1.9-0+deb12u1 …", "ffmpeg version n7.1 …". A snapshot has no number.
bool isNewEnough(const QString &text)
{
    static const QRegularExpression version(u"\\Affmpeg version n?([0-9]+)\\."_s);
    return version.match(text).captured(1).toInt() >= firstVersion;
}

struct Programs {
    QMutex mutex;
    QHash<QString, bool> opensExcerpts;
};

Programs &programs()
{
    static Programs all;
    return all;
}

/// The list is read line by line, whatever is quoted.
bool fitsALine(const QByteArray &path)
{
    return std::ranges::none_of(path, [](char byte) { return uchar(byte) < 0x20; });
}

} // namespace

bool opensExcerpts(const QString &ffmpeg)
{
    Programs &known = programs();
    const QMutexLocker locker(&known.mutex);
    if (!known.opensExcerpts.contains(ffmpeg))
        known.opensExcerpts.insert(
            ffmpeg, isNewEnough(taskArrayWithin({ffmpeg, u"-version"_s}, answerLimit)));
    return known.opensExcerpts.value(ffmpeg);
}

void hearVersion(const QString &ffmpeg, const QString &report)
{
    Programs &known = programs();
    const QMutexLocker locker(&known.mutex);
    if (!known.opensExcerpts.contains(ffmpeg) && report.startsWith(u"ffmpeg version "))
        known.opensExcerpts.insert(ffmpeg, isNewEnough(report));
}

QStringList excerptInput(const QString &srcPath, const Excerpt &excerpt)
{
    QByteArray path = QFile::encodeName(srcPath);
    if (!path.startsWith('/') || !fitsALine(path))
        return {};
    path.replace('\'', "'\\''");
    // The list ffmpeg joins files by is told in the argument itself. Without a decoder on its
    // list of allowed ones ffmpeg does not try to decode what it opens.
    const QByteArray list =
        "ffconcat version 1.0\nfile 'file:" + path +
        "'\noption codec_whitelist none\noption format_whitelist mov,matroska\n"
        "option probesize 32\n" +
        (excerpt.startsAnywhere ? "option seek2any 1\n" : "") +
        filled(u"inpoint %.6f\noutpoint %.6f\n", excerpt.start, excerpt.end).toUtf8();
    return {u"-itsoffset"_s,
            filled(u"%.6f", excerpt.start - excerpt.zero),
            u"-protocol_whitelist"_s,
            u"file,data"_s,
            u"-safe"_s,
            u"0"_s,
            u"-auto_convert"_s,
            u"0"_s,
            u"-f"_s,
            u"concat"_s,
            u"-ss"_s,
            u"0"_s,
            u"-i"_s,
            u"data:text/plain;base64,"_s + QString::fromLatin1(list.toBase64())};
}

} // namespace vignar
