#pragma once

#include <QImage>
#include <QList>
#include <QObject>

namespace vignar
{

/// What a player has learnt of the open source so far.
struct MediaInfo {
    /// Seconds; 0: not known.
    double duration = 0;
    /// Where the chapters start, in seconds, ascending.
    QList<double> chapters;
    bool hasAudio = false;
};

enum class FrameStep { back, forward };

/// Plays one source silently until asked. Seconds count from the source's start as they do
/// for ffmpeg. Every method returns at once; all signals come from the event loop.
///
/// A move is an open(), a seek() or a step(). One is under way at a time: moveEnded()
/// tells the end of each exactly once, unless failed() does.
class MediaPlayer : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Opens the local file of an absolute path, paused, at an instant. Once in the life of a
    /// player.
    virtual void open(const QString &path, double seconds) = 0;
    /// Shows the first picture that is not before the instant, or the last one.
    virtual void seek(double seconds) = 0;
    /// One picture on or back, paused. At the first and the last picture nothing moves.
    virtual void step(FrameStep direction) = 0;
    virtual void setPaused(bool isPaused) = 0;
    virtual void setMuted(bool isMuted) = 0;
    /// The room for pictures in device pixels; they are made to fit it.
    virtual void setRoom(const QSize &pixels) = 0;

Q_SIGNALS:
    void infoChanged(const vignar::MediaInfo &info);
    /// Upright, with square pixels, as large as the room allows.
    void pictureShown(const QImage &picture);
    /// Where the picture shown stands.
    void positionChanged(double seconds);
    void pausedChanged(bool isPaused);
    void moveEnded(double seconds);
    /// Nothing can be shown, now or ever.
    void failed();
};

} // namespace vignar
