#pragma once

#include <QByteArrayList>
#include <QImage>

#include <functional>
#include <memory>

struct mpv_event;
struct mpv_handle;
struct mpv_render_context;

namespace vignar
{

enum class Sound { device, none };

/// "libmpv 0.35.1"; null where the library does not work.
QString mpvVersion();

/// One instance of libmpv that draws in memory. It reads the file that it is told to and
/// nothing else: no configuration, script, subtitle or address beside or inside that.
/// Destruction ends its threads and releases the file, also while that is opening.
class MpvCore
{
public:
    /// Both are called from threads of the library and may call nothing of it.
    struct Callbacks {
        std::function<void()> eventsWait;
        std::function<void()> pictureWaits;
    };

    /// Null where the library does not work.
    static std::unique_ptr<MpvCore> create(Sound sound, Callbacks callbacks);

    /// One argument a word. reply, unless 0, marks the event that tells of its end.
    void command(const QByteArrayList &words, quint64 reply = 0);
    /// Asks for what tells how a move has ended, the position last, which comes with the
    /// reply: unasked, the properties may be told late.
    void askPlace(quint64 reply);
    /// Valid until the next call; null when none waits.
    const mpv_event *nextEvent();

    /// True when there is a picture that has not been drawn yet.
    bool hasNewPicture();
    /// The picture shown now, of that size.
    QImage picture(const QSize &size);

private:
    explicit MpvCore(Callbacks callbacks);
    bool start(Sound sound);

    struct EndCore {
        void operator()(mpv_handle *core) const;
    };
    struct EndRenderer {
        void operator()(mpv_render_context *renderer) const;
    };
    Callbacks m_callbacks;
    std::unique_ptr<mpv_handle, EndCore> m_core;
    /// Must go before the core, and does.
    std::unique_ptr<mpv_render_context, EndRenderer> m_renderer;
};

} // namespace vignar
