#include "classShared/sizes.h"

#include "classShared/files.h"
#include "classShared/lineLog.h"
#include "classShared/paths.h"
#include "classShared/truncation.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdio>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

constexpr float kilo = 1024;

/// Bytes in the unit asked for; a null unit means bytes.
float bytesInUnit(qint64 bytes, const QString &unit)
{
    if (unit.isNull() || unit.toLower() == "o"_L1)
        return static_cast<float>(bytes);
    return poidsConvert(bytes, unit);
}

/// Megabytes in the unit; nothing for a unit that folders do not know.
std::optional<float> megabytesInUnit(float megabytes, const QString &unit)
{
    const QString upper = unit.toUpper();
    if (upper == "G"_L1)
        return megabytes / kilo;
    if (upper == "M"_L1)
        return megabytes;
    if (upper == "K"_L1)
        return megabytes * kilo;
    if (upper == "O"_L1 || upper == "B"_L1)
        return megabytes * kilo * kilo;
    return std::nullopt;
}

/// The unit as the log shows it; bytes have a letter of their own.
QString shownUnit(const QString &unit, const QString &byteUnit)
{
    const QString upper = unit.toUpper();
    return upper == "G"_L1 || upper == "M"_L1 || upper == "K"_L1 ? upper : byteUnit;
}

struct FileCloser {
    void operator()(std::FILE *file) const
    {
        std::fclose(file);
        logDebug(u"fclose end");
    }
};

/// Bytes up to the end of the file as the C stream library sees it, or -1.
qint64 streamSize(const QString &path)
{
    logDebug(u"poidsFileC          : (1)");
    const QString extension = QFileInfo(path).suffix();
    const bool isText = extension == "log"_L1 || extension == "txt"_L1;
    const std::unique_ptr<std::FILE, FileCloser> file(
        std::fopen(QFile::encodeName(path).constData(), isText ? "r" : "rb"));
    logDebug(u"poidsFileC          : (2)");
    if (!file)
        return -1;
    logDebug(u"poidsFileC          : (3)");
    if (::fseeko(file.get(), 0, SEEK_END) != 0)
        return -1;
    logDebug(u"poidsFileC          : (4)");
    return ::ftello(file.get());
}

} // namespace

float poidsConvert(qint64 bytes, const QString &unit)
{
    const QString upper = unit.isNull() ? u"K"_s : unit.toUpper();
    auto weight = static_cast<float>(bytes);
    if (bytes > 0 && upper == "K"_L1)
        weight /= kilo;
    else if (bytes > 0 && upper == "M"_L1)
        weight /= kilo * kilo;
    else if (bytes > 0 && upper == "G"_L1)
        weight /= kilo * kilo * kilo;
    return weight;
}

float poidsFile(const QString &path, const QString &unit)
{
    const QFileInfo info(QDir::cleanPath(expandTilde(path)));
    if (path.isEmpty() || !info.exists())
        return -1;
    if (info.isDir()) {
        if (const auto weight = megabytesInUnit(folderSizeMo(info.filePath()), unit))
            return *weight;
    }
    logDebug(u"current file size   : %lld units", info.size());
    const float weight = bytesInUnit(info.size(), unit);
    logDebug(u"current file size   : %.2f %@B", weight, shownUnit(unit, u""_s));
    return weight;
}

float poidsFileC(const QString &path, const QString &unit)
{
    const QFileInfo info(QDir::cleanPath(expandTilde(path)));
    // Opening a pipe would wait, and the end of a folder's stream means nothing.
    if (path.isEmpty() || !info.isFile())
        return poidsFile(path, unit);
    const qint64 bytes = streamSize(info.filePath());
    if (bytes < 0)
        return -1;
    logLine(u"poidsFileC          :   %lld units", bytes);
    const float weight = bytesInUnit(bytes, unit);
    logLine(u"poidsFileC          :-) %.2f %@", weight, shownUnit(unit, u"O"_s));
    return weight;
}

int bitrateLimited(float duration, int maxMegabytes)
{
    constexpr double audioRate = 192;
    constexpr double megabyte = 1024.0 * 1024.0;
    const double kilobits = maxMegabytes * megabyte * 8 / 1000;
    const double audio = audioRate * duration;
    const double video = kilobits - audio;
    const int rate = truncatedTo<int>(video / duration);
    logDebug(u"duration            : %.2f\"", duration);
    logDebug(u"poidsAVMax          : %ld MB > %.0f bits", maxMegabytes, kilobits);
    logDebug(u"poidsA              : %.0f MB (%.0f bits)", audio * 1000 / 8 / megabyte, audio);
    logDebug(u"poidsV              : %.0f", video);
    logDebug(u"bitrate Limited     : %ld kb/s", rate);
    return rate;
}

double encDstPoidsEstimatif()
{
    const double neutral = 1.0;
    logDebug(u"encDstPoidsEstimatif: %f", neutral);
    return neutral;
}

} // namespace vignar
