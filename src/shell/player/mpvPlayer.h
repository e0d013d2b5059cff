#pragma once

#include "shell/player/mediaPlayer.h"

#include <memory>
#include <optional>

struct mpv_event;
struct mpv_event_end_file;
struct mpv_event_property;
struct mpv_handle;
struct mpv_node;
struct mpv_render_context;

namespace vignar
{

enum class Sound { device, none };

/// The player that libmpv makes, drawing in memory. It reads the one file and nothing else:
/// no configuration, script, subtitle or address beside or inside it. Destruction ends its
/// threads and releases the file, also while it is opening.
class MpvPlayer : public MediaPlayer
{
    Q_OBJECT

public:
    explicit MpvPlayer(Sound sound, QObject *parent = nullptr);
    ~MpvPlayer() override;

    void open(const QString &path, double seconds) override;
    void seek(double seconds) override;
    void step(FrameStep direction) override;
    void setPaused(bool isPaused) override;
    void setMuted(bool isMuted) override;
    void setRoom(const QSize &pixels) override;

private:
    enum Reply : quint64 { noReply, moveReply, positionReply };
    struct Shape {
        /// In square pixels, before the turn.
        QSize size;
        /// Clockwise, in degrees.
        int turn = 0;
    };

    struct Move {
        QByteArrayList words;
        /// A later position than this means that pictures were missed, in seconds.
        double latest;
        /// Index of the run-up that was in use before.
        size_t firstRunUp = 0;
    };

    bool create(Sound sound);
    void command(const QByteArrayList &words, Reply reply = noReply);
    void handleEvents();
    void handle(const mpv_event &event);
    void handleReply(const mpv_event &event);
    void handleProperty(const mpv_event_property &property);
    void handlePosition(double seconds);
    void handleEnd(const mpv_event_end_file &end);
    void setShape(const mpv_node &parameters);
    static Move seekMove(double seconds);
    void startMove(const Move &move);
    bool retryMove();
    void endMove();
    void fail();
    void draw();
    QImage drawnPicture();

    struct EndCore {
        void operator()(mpv_handle *core) const;
    };
    struct EndRenderer {
        void operator()(mpv_render_context *renderer) const;
    };
    /// The renderer must go before the core.
    std::unique_ptr<mpv_handle, EndCore> m_core;
    std::unique_ptr<mpv_render_context, EndRenderer> m_renderer;

    QSize m_room;
    Shape m_shape;
    MediaInfo m_info;
    double m_position = 0;
    std::optional<Move> m_move;
    size_t m_runUp = 0;
    bool m_isWithoutIndex = false;
    /// A forward step ends with the next picture; the core does not tell its end.
    bool m_isStepping = false;
    bool m_isAtEnd = false;
    bool m_hasFailed = false;
};

} // namespace vignar
