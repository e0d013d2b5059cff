#include "shell/player/mpvCore.h"

#include "classShared/lineLog.h"

#include <mpv/client.h>
#include <mpv/render.h>

#include <clocale>
#include <string>
#include <string_view>
#include <vector>

namespace vignar
{

using namespace Qt::StringLiterals;
using namespace std::string_view_literals;

namespace
{

struct Option {
    const char *name;
    const char *value;
};

constexpr Option options[] = {
    // Nothing beside the file itself is read, run or reached.
    {"config", "no"},
    {"load-scripts", "no"},
    {"load-stats-overlay", "no"},
    {"load-auto-profiles", "no"},
    {"load-osd-console", "no"},
    {"ytdl", "no"},
    {"osc", "no"},
    {"input-default-bindings", "no"},
    {"input-builtin-bindings", "no"},
    {"terminal", "no"},
    {"access-references", "no"},
    {"autoload-files", "no"},
    {"sub-auto", "no"},
    {"audio-file-auto", "no"},
    {"cover-art-auto", "no"},
    {"resume-playback", "no"},
    {"save-position-on-quit", "no"},
    // The library that ffmpeg reads with, so that both see the same streams and instants,
    // and neither of the two ways in which a list could name other files.
    {"demuxer", "lavf"},
    {"demuxer-lavf-o", "protocol_whitelist=none"},
    // What a sheet shows: the bare picture.
    {"sid", "no"},
    {"osd-level", "0"},
    {"hwdec", "no"},
    // We turn the picture: drawing in memory, the library would end the program over it.
    {"video-rotate", "no"},
    {"vo", "libmpv"},
    {"hr-seek", "yes"},
    {"pause", "yes"},
    // Only what plays sounds: sound would also set the position at the end.
    {"aid", "no"},
    {"keep-open", "always"},
    {"idle", "yes"},
    {"cache", "no"},
};

struct Property {
    const char *name;
    mpv_format format;
};

/// What is listened to.
constexpr Property properties[] = {
    {"time-pos", MPV_FORMAT_DOUBLE},    {"pause", MPV_FORMAT_FLAG},
    {"eof-reached", MPV_FORMAT_FLAG},   {"duration", MPV_FORMAT_DOUBLE},
    {"file-format", MPV_FORMAT_STRING}, {"chapter-list", MPV_FORMAT_NODE},
    {"track-list", MPV_FORMAT_NODE},    {"video-out-params", MPV_FORMAT_NODE},
};

/// The library refuses to work where the decimal sign is no point.
void prepareNumbers()
{
    if (std::setlocale(LC_NUMERIC, nullptr) != "C"sv)
        std::setlocale(LC_NUMERIC, "C");
}

void callBack(void *callback)
{
    (*static_cast<std::function<void()> *>(callback))();
}

} // namespace

void MpvCore::EndCore::operator()(mpv_handle *core) const
{
    mpv_set_wakeup_callback(core, nullptr, nullptr);
    mpv_terminate_destroy(core);
}

void MpvCore::EndRenderer::operator()(mpv_render_context *renderer) const
{
    mpv_render_context_set_update_callback(renderer, nullptr, nullptr);
    mpv_render_context_free(renderer);
}

QString mpvVersion()
{
    prepareNumbers();
    const std::unique_ptr<mpv_handle, void (*)(mpv_handle *)> core(mpv_create(),
                                                                   mpv_terminate_destroy);
    if (!core || mpv_initialize(core.get()) < 0)
        return {};
    // "mpv 0.35.1"
    const std::unique_ptr<char, void (*)(void *)> version(
        mpv_get_property_string(core.get(), "mpv-version"), mpv_free);
    return u"lib"_s + QString::fromUtf8(version.get());
}

MpvCore::MpvCore(Callbacks callbacks) : m_callbacks(std::move(callbacks)) {}

std::unique_ptr<MpvCore> MpvCore::create(Sound sound, Callbacks callbacks)
{
    std::unique_ptr<MpvCore> core(new MpvCore(std::move(callbacks)));
    return core->start(sound) ? std::move(core) : nullptr;
}

bool MpvCore::start(Sound sound)
{
    prepareNumbers();
    m_core.reset(mpv_create());
    if (!m_core)
        return false;
    for (const Option &option : options) {
        if (mpv_set_option_string(m_core.get(), option.name, option.value) < 0)
            logLine(u"player              :-/ no option '%@'", QString::fromLatin1(option.name));
    }
    if (sound == Sound::none)
        mpv_set_option_string(m_core.get(), "ao", "null");
    if (mpv_initialize(m_core.get()) < 0)
        return false;

    std::string api = MPV_RENDER_API_TYPE_SW;
    mpv_render_param parameters[] = {{MPV_RENDER_PARAM_API_TYPE, api.data()},
                                     {MPV_RENDER_PARAM_INVALID, nullptr}};
    mpv_render_context *renderer = nullptr;
    if (mpv_render_context_create(&renderer, m_core.get(), parameters) < 0)
        return false;
    m_renderer.reset(renderer);
    for (const Property &property : properties)
        mpv_observe_property(m_core.get(), 0, property.name, property.format);
    mpv_set_wakeup_callback(m_core.get(), callBack, &m_callbacks.eventsWait);
    mpv_render_context_set_update_callback(renderer, callBack, &m_callbacks.pictureWaits);
    return true;
}

void MpvCore::command(const QByteArrayList &words, quint64 reply)
{
    // Each word is one argument as it stands; nothing is parsed or expanded in it.
    std::vector<const char *> arguments;
    for (const QByteArray &word : words)
        arguments.push_back(word.constData());
    arguments.push_back(nullptr);
    mpv_command_async(m_core.get(), reply, arguments.data());
}

void MpvCore::askPlace(quint64 reply)
{
    mpv_get_property_async(m_core.get(), 0, "file-format", MPV_FORMAT_STRING);
    mpv_get_property_async(m_core.get(), 0, "duration", MPV_FORMAT_DOUBLE);
    mpv_get_property_async(m_core.get(), 0, "eof-reached", MPV_FORMAT_FLAG);
    mpv_get_property_async(m_core.get(), reply, "time-pos", MPV_FORMAT_DOUBLE);
}

const mpv_event *MpvCore::nextEvent()
{
    const mpv_event *event = mpv_wait_event(m_core.get(), 0);
    return event->event_id == MPV_EVENT_NONE ? nullptr : event;
}

bool MpvCore::hasNewPicture()
{
    return (mpv_render_context_update(m_renderer.get()) & MPV_RENDER_UPDATE_FRAME) != 0;
}

QImage MpvCore::picture(const QSize &size)
{
    QImage picture(size, QImage::Format_RGB32);
    int sides[] = {size.width(), size.height()};
    std::string format = "bgr0";
    auto stride = static_cast<size_t>(picture.bytesPerLine());
    int waitsForItsTime = 0;
    mpv_render_param parameters[] = {
        {MPV_RENDER_PARAM_SW_SIZE, sides},
        {MPV_RENDER_PARAM_SW_FORMAT, format.data()},
        {MPV_RENDER_PARAM_SW_STRIDE, &stride},
        {MPV_RENDER_PARAM_SW_POINTER, picture.bits()},
        {MPV_RENDER_PARAM_BLOCK_FOR_TARGET_TIME, &waitsForItsTime},
        {MPV_RENDER_PARAM_INVALID, nullptr},
    };
    mpv_render_context_render(m_renderer.get(), parameters);
    return picture;
}

} // namespace vignar
