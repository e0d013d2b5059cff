#pragma once

#include <QSize>
#include <QString>
#include <QVariant>

#include <functional>
#include <optional>

namespace vignar
{

/// The most that is read of a source to measure its duration: 512 MB, some seconds from a
/// disk.
inline constexpr qint64 mostMeasuredBytes = 512'000'000;

/// The durations that the readers state, in seconds; invalid where one is silent.
struct DurationClaims {
    QVariant mp;
    QVariant ff;
    QVariant qt;
};

/// The claim that wins; invalid when there is none.
QVariant reconciledDuration(const DurationClaims &claims, const QString &extension);

/// Whole seconds that a recording bundle (".eyetv", ".eyetvsched") on the way to the path
/// states of its recording; nothing when there is no such bundle or statement.
std::optional<int> bundleDuration(const QString &srcPath);
/// The same, read from the text of the bundle's recording file.
std::optional<int> recordedDuration(const QString &recording);

/// A DVD file and what is known of it.
struct DvdFile {
    double kilobytes = 0;
    /// kb/s of the container; nothing when not known.
    std::optional<double> bitrate;
    bool hasMpeg2Demultiplexer = false;
    /// Seconds read from the whole stream; 1 or below: not known.
    std::function<int()> measure;
};

/// A DVD file's duration after the check against its size.
struct CheckedDuration {
    double seconds = 0;
    /// The timecode breaks inside the file: the duration is an estimate.
    bool isTimecodeBroken = false;
};

/// Below 150 MB (512 MB with a demultiplexer of its own) the file is measured. Of a larger one
/// whose bit rate no DVD can have, the duration is twice what the file lasts at the highest
/// rate of a DVD, if that is more than stated.
CheckedDuration checkedDvdDuration(double seconds, const DvdFile &file);

/// A transport stream as far as it speaks for its duration.
struct TransportStream {
    qint64 bytes = 0;
    /// Pixels of a picture, and pictures a second.
    QSize size;
    double fps = 0;
    /// Seconds read from the whole stream; 1 or below: not known.
    std::function<int()> measure;
};

/// A transport stream's duration in seconds: measured where the stated one leaves less
/// than 0.01 bits a pixel, a tenth of what cameras and broadcasters spend. The time stamps
/// of such a file jump, and the stated duration counts the gap. Files beyond 512 MB, which
/// take too long to read, are believed.
double checkedTransportDuration(double seconds, const TransportStream &stream);

} // namespace vignar
