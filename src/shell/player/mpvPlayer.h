#pragma once

#include "shell/player/mediaPlayer.h"
#include "shell/player/mpvCore.h"

#include <optional>
#include <string_view>

struct mpv_event_end_file;
struct mpv_event_property;

namespace vignar
{

/// The player that libmpv makes.
class MpvPlayer : public MediaPlayer
{
    Q_OBJECT

public:
    explicit MpvPlayer(Sound sound, QObject *parent = nullptr);

    void open(const QString &path, double seconds) override;
    void seek(double seconds) override;
    void step(FrameStep direction) override;
    void setPaused(bool isPaused) override;
    void setMuted(bool isMuted) override;
    void setRoom(const QSize &pixels) override;

private:
    enum Reply : quint64 { noReply, moveReply, positionReply };
    struct Move {
        QByteArrayList words;
        /// A later position than this means that pictures were missed, in seconds.
        double latest;
        /// False for one that nobody has asked for.
        bool isTold = true;
        /// Where it started, in seconds.
        double from = 0;
        /// The core has taken it up: the next arrival that it tells of is of this move.
        bool isTakenUp = false;
        /// The core has been asked twice whether it is at the end.
        bool isSureOfEnd = false;
        /// Index of the run-up that was in use before.
        size_t firstRunUp = 0;
    };

    void command(const QByteArrayList &words, Reply reply = noReply);
    static Move seekMove(double seconds);
    void startMove(const Move &move);
    bool retryMove();
    void settleMove();
    void endMove();
    bool isNothingLeft() const;
    void playOn();

    void handleEvents();
    void handle(const mpv_event &event);
    void handleReply(const mpv_event &event);
    void handleProperty(const mpv_event_property &property);
    void handleInfo(std::string_view name, const void *data);
    void handlePause(bool isPaused);
    void handlePosition(double seconds);
    void handleEnd(const mpv_event_end_file &end);
    void fail();
    void handlePicture();
    void showPicture();

    /// Null once nothing can be shown.
    std::unique_ptr<MpvCore> m_core;
    QSize m_room;
    /// Of the picture in square pixels, before its quarter turns (clockwise).
    QSize m_size;
    int m_turns = 0;
    MediaInfo m_info;
    double m_position = 0;
    std::optional<Move> m_move;
    size_t m_runUp = 0;
    bool m_isWithoutIndex = false;
    /// A forward step ends with the next picture; the core does not tell its end.
    bool m_isStepping = false;
    bool m_isAtEnd = false;
    bool m_isToPlay = false;
};

} // namespace vignar
