#pragma once

#include "classShared/sourceDico.h"

#include <memory>
#include <optional>

class QImage;

namespace vignar
{

/// A movie opened by the platform's movie framework, standing at one of its frames.
class OpenedMovie
{
public:
    virtual ~OpenedMovie() = default;

    /// Seconds.
    virtual double duration() const = 0;
    /// Units of the movie's own time in a second, above 0.
    virtual qint64 timeScale() const = 0;
    /// Goes to a time in these units, 0 being the movie's start.
    virtual void setCurrentTime(qint64 time) = 0;
    /// The frame shown at the current time; null when it cannot be decoded.
    virtual QImage currentFrameImage() = 0;
};

/// The platform's movie framework: a second opinion on a source, and a frame grabber.
class MovieFramework
{
public:
    /// How a frame rate is measured: on the movie, or on an extract of it.
    enum class RateMeasurement { normal, extract };

    virtual ~MovieFramework() = default;

    /// Properties with the key scheme of the source record; empty when unreadable.
    virtual Dico inspect(const QString &path) = 0;
    /// Frames per second, or 0 when unknown.
    virtual double measureFrameRate(const QString &path, RateMeasurement mode) = 0;
    /// Writes the first 10 seconds as a movie.
    virtual bool writeExtract(const QString &path, const QString &destination) = 0;
    virtual bool canDecode(const QString &path) = 0;
    /// Null when the source is no movie that the framework can read.
    virtual std::unique_ptr<OpenedMovie> openMovie(const QString &path) = 0;
    virtual bool hasMpeg2Playback() const = 0;
    virtual bool hasMpeg2Demultiplexer() const = 0;
};

/// The framework of a platform that has none: every source is unusable to it.
std::unique_ptr<MovieFramework> makeAbsentMovieFramework();

} // namespace vignar
