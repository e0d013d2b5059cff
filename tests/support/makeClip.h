#pragma once

#include <QDir>
#include <QProcess>
#include <QStringList>

namespace vignar
{

/// Makes a clip with ffmpeg from a picture source and further arguments.
inline bool makeClip(const QString &path, const QString &source, const QStringList &arguments = {})
{
    using namespace Qt::StringLiterals;
    QDir().mkpath(QFileInfo(path).path());
    QStringList all{u"-loglevel"_s, u"error"_s, u"-y"_s, u"-f"_s, u"lavfi"_s, u"-i"_s, source};
    all += arguments;
    all += path;
    return QProcess::execute(u"ffmpeg"_s, all) == 0;
}

} // namespace vignar
