#pragma once

#include "classShared/sourceDico.h"
#include "sheet/streamCoding.h"

#include <QFile>

#include <functional>
#include <memory>

namespace vignar
{

/// A picture as it is kept in a container. Times are ticks of its track.
struct CodedPicture {
    /// When it is shown.
    qint64 shownAt = 0;
    /// The tick to ask ffmpeg for to be given this picture first; it is decoded at this tick or
    /// before it.
    qint64 soughtAt = 0;
    /// Bytes of the file.
    qint64 position = 0;
    qint64 size = 0;
    /// A seek ends at it. Decoding can begin here.
    bool isSync = false;
};

/// What the tables of a container tell of its only picture stream, without decoding any of it.
///
/// Counts time as ffmpeg does. Belongs to one thread.
class PictureIndex
{
public:
    /// Reads the tables of a source (from keys srcPathStr and wrapper); null where there are
    /// none or where they leave room for doubt. Waits for the disk.
    static std::unique_ptr<PictureIndex> of(const SourceDico &source);

    virtual ~PictureIndex() = default;
    Q_DISABLE_COPY_MOVE(PictureIndex)

    /// Hands over the pictures in decoding order, from the last sync picture shown at a tick
    /// or before it on, until visit returns false. False when they cannot be told.
    virtual bool visitFrom(qint64 tick, const std::function<bool(const CodedPicture &)> &visit) = 0;

    /// True when ffmpeg's reader can be told to begin at pictures that are no sync pictures.
    virtual bool seeksAnywhere() const = 0;

    qint64 ticksASecond() const { return m_ticksASecond; }
    StreamCoding coding() const { return *m_coding; }
    /// Some bytes of the source; none when far more has been read than any search needs, as in a
    /// file made to be read without end.
    QByteArray bytesAt(qint64 position, qint64 count);

protected:
    explicit PictureIndex(std::unique_ptr<QFile> file) : m_file(std::move(file)) {}

    qint64 m_ticksASecond = 0;
    /// There once the tables are read.
    std::optional<StreamCoding> m_coding;
    std::unique_ptr<QFile> m_file;

private:
    /// They take a few seconds; a search needs a few thousand.
    int m_readsLeft = 2'000'000;
};

} // namespace vignar
