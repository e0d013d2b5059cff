#include "settings/logFiles.h"

#include "classShared/lineLog.h"
#include "classShared/paths.h"
#include "settings/applicationPlaces.h"
#include "settings/logFolderLock.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdio>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace vignar
{
using namespace Qt::StringLiterals;

namespace
{

constexpr QByteArrayView byteOrderMark("\xEF\xBB\xBF");

/// What waits for its release; nothing: the summary log is not held.
std::optional<QString> heldSummary;

QString logPath(const QString &name)
{
    return applicationPlaces().logFolder() + u'/' + name;
}

bool writeWhole(QFile &file, QByteArrayView bytes)
{
    return file.write(bytes.data(), bytes.size()) == bytes.size();
}

/// Creates the file when it is missing. True when it exists afterwards.
bool createMissing(const QString &path, bool withBom)
{
    if (QFile::exists(path))
        return true;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        return QFile::exists(path);
    logDebug(u"created");
    return !withBom || writeWhole(file, byteOrderMark);
}

/// One unbuffered write at the end, so that lines of several processes never mix.
bool appendBytes(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::Append | QIODevice::Unbuffered) && writeWhole(file, bytes);
}

/// The log of the last run replaces that of the run before it.
void keepAsPrevious(const QString &path)
{
    const QFileInfo info(path);
    const QString previous = info.path() + u"/Previous-"_s + info.fileName();
    // rename(2) replaces in one step: the log always exists under one of both names.
    std::rename(QFile::encodeName(path).constData(), QFile::encodeName(previous).constData());
}

/// Log lines to the detailed log alone. A line that cannot be written is lost: the
/// terminal belongs to the command line's own messages.
void sendLinesTo(const QString &path)
{
    setLogSink([path](const QString &line) { appendBytes(path, (line + u'\n').toUtf8()); });
}

} // namespace

QString detailedLogPath()
{
    return logPath(u"Details.log"_s);
}

QString summaryLogPath()
{
    return logPath(u"Resume.log"_s);
}

int summaryLogAppend(const QString &text)
{
    if (heldSummary) {
        *heldSummary += text;
        return text.isNull() ? 0 : 1;
    }
    const QString path = summaryLogPath();
    if (!QFile::exists(path)) {
        const QString now = QDateTime::currentDateTime().toString(u"yyyy-MM-dd HH:mm:ss"_s);
        appendTextToFile(path, filled(u"start date    : %@", now), true);
    }
    return text.isNull() ? 0 : appendTextToFile(path, text, false);
}

void holdSummaryLog()
{
    if (!heldSummary)
        heldSummary = u""_s;
}

void releaseSummaryLog()
{
    if (const auto held = std::exchange(heldSummary, {}); held && !held->isEmpty())
        summaryLogAppend(*held);
}

int appendTextToFile(const QString &path, const QString &text, bool withBom)
{
    if (path.isEmpty() || text.isEmpty())
        return 0;
    const QString expanded = expandTilde(path);
    if (!createMissing(expanded, withBom)) {
        std::fputs("Impossible to create destination file !\n", stderr);
        return 0;
    }
    if (!appendBytes(expanded, text.toUtf8()))
        return 0;
    logDebug(u"ecrit               :-) %@", text);
    return 1;
}

void redirectStdoutToFile(const QString &path)
{
    static bool newStdout = false;
    static bool newStderr = false;
    if (newStdout || newStderr) {
        logLine(u"if (newStdout || newStderr)");
        return;
    }
    logLine(u"redirectStdoutToFile…");
    const QString expanded = expandTilde(path);
    createMissing(expanded, true);
    // Unlike freopen(), dup2() leaves a stream where it was when the file cannot be had.
    const int file = open(QFile::encodeName(expanded).constData(),
                          O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
    if (file < 0)
        return;
    std::fflush(stdout);
    newStdout = dup2(file, STDOUT_FILENO) >= 0;
    newStderr = dup2(file, STDERR_FILENO) >= 0;
    close(file);
}

void startLogs(StandardStreams streams)
{
    // Held until the process ends.
    static LogFolderLock lock;
    if (streams == StandardStreams::keep)
        sendLinesTo(detailedLogPath());
    const QString folder = applicationPlaces().logFolder();
    QDir().mkpath(folder);
    // The logs tell the names of all of the user's videos.
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    if (lock.enter(folder) == LogFolderLock::Writers::onlyUs) {
        keepAsPrevious(summaryLogPath());
        keepAsPrevious(detailedLogPath());
    }
    lock.join();
    createMissing(detailedLogPath(), true);
    summaryLogAppend({});
    for (const QString &path : {detailedLogPath(), summaryLogPath()})
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
    if (streams == StandardStreams::redirect)
        redirectStdoutToFile(detailedLogPath());
}

} // namespace vignar
