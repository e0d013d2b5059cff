#pragma once

#include <QStringList>

namespace vignar
{

/// The parts of a planned pass.
struct PassParts {
    QString tool;
    /// Options of the input, without the log level; the seek is among them.
    QStringList input;
    QString source;
    /// The choice of a stream; empty for ffmpeg's own.
    QStringList stream;
    /// Options of the output, without the choice of a stream and its path.
    QStringList output;
    QString path;
    /// Seconds into the source.
    double instant = 0;
};

/// The parts of an argument list with "-i" in it and the output's path at its end.
PassParts takenApart(const QStringList &pass);

/// The filter text among the options of an output.
QString filterOf(const QStringList &output);

/// The seconds after which a pass ends that has found nothing.
double durationOf(const PassParts &pass);

/// True when the input has no options but to be sought.
bool isOnlySought(const PassParts &pass);

/// True when the pass reads a source and takes intra pictures only.
bool selectsIntraPictures(const QStringList &pass);

} // namespace vignar
