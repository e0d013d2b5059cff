#pragma once

#include "classShared/sourceDico.h"

#include <memory>
#include <optional>

namespace vignar
{

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
    /// Writes one picture of the size into the folder.
    virtual bool makeThumbnail(const QString &path, const QString &folder, int width,
                               int height) = 0;
    virtual bool hasMpeg2Playback() const = 0;
    virtual bool hasMpeg2Demultiplexer() const = 0;
};

/// The framework of a platform that has none: every source is unusable to it.
std::unique_ptr<MovieFramework> makeAbsentMovieFramework();

} // namespace vignar
