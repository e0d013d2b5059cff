#include "shell/player/mpvPlayer.h"

#include "classShared/lineLog.h"

#include <QFile>
#include <QTransform>

#include <mpv/client.h>
#include <mpv/render.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <limits>
#include <span>
#include <string_view>

namespace vignar
{

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
    // and none of the playlist formats.
    {"demuxer", "lavf"},
    // What a sheet shows: the bare picture.
    {"sid", "no"},
    {"aid", "no"},
    {"osd-level", "0"},
    {"hwdec", "no"},
    {"vo", "libmpv"},
    {"hr-seek", "yes"},
    {"pause", "yes"},
    {"keep-open", "always"},
    {"idle", "yes"},
    {"cache", "no"},
};

/// Seconds before a wanted picture at which decoding starts in a file that needs it.
constexpr std::array runUps{0.0, 2.0, 12.0, 30.0};

/// Later than this is not just the next picture.
constexpr double lateSeconds = 0.1;

/// Less than the time of one picture.
constexpr double sameInstant = 0.001;

/// The formats that hold no index: a seek in them goes by time stamps.
constexpr std::array formatsWithoutIndex{"mpegts"sv, "mpeg"sv, "mpegvideo"sv, "h264"sv, "hevc"sv};

template <class... Parameters>
void renderWith(mpv_render_context *renderer, Parameters... parameters)
{
    mpv_render_param list[] = {parameters..., {MPV_RENDER_PARAM_INVALID, nullptr}};
    mpv_render_context_render(renderer, list);
}

const mpv_node *member(const mpv_node &node, std::string_view key)
{
    if (node.format != MPV_FORMAT_NODE_MAP)
        return nullptr;
    for (int index = 0; index < node.u.list->num; ++index) {
        if (node.u.list->keys[index] == key)
            return &node.u.list->values[index];
    }
    return nullptr;
}

int integer(const mpv_node &node, std::string_view key)
{
    const mpv_node *found = member(node, key);
    return found && found->format == MPV_FORMAT_INT64 ? static_cast<int>(found->u.int64) : 0;
}

std::span<const mpv_node> elements(const mpv_node &node)
{
    if (node.format != MPV_FORMAT_NODE_ARRAY)
        return {};
    return {node.u.list->values, static_cast<size_t>(node.u.list->num)};
}

QList<double> chapterStarts(const mpv_node &chapters)
{
    QList<double> starts;
    for (const mpv_node &chapter : elements(chapters)) {
        const mpv_node *time = member(chapter, "time"sv);
        if (time && time->format == MPV_FORMAT_DOUBLE)
            starts.append(std::max(0.0, time->u.double_));
    }
    std::sort(starts.begin(), starts.end());
    return starts;
}

bool holdsAudio(const mpv_node &tracks)
{
    const auto all = elements(tracks);
    return std::any_of(all.begin(), all.end(), [](const mpv_node &track) {
        const mpv_node *type = member(track, "type"sv);
        return type && type->format == MPV_FORMAT_STRING && type->u.string == "audio"sv;
    });
}

} // namespace

void MpvPlayer::EndCore::operator()(mpv_handle *core) const
{
    mpv_set_wakeup_callback(core, nullptr, nullptr);
    mpv_terminate_destroy(core);
}

void MpvPlayer::EndRenderer::operator()(mpv_render_context *renderer) const
{
    mpv_render_context_set_update_callback(renderer, nullptr, nullptr);
    mpv_render_context_free(renderer);
}

MpvPlayer::MpvPlayer(Sound sound, QObject *parent) : MediaPlayer(parent)
{
    m_hasFailed = !create(sound);
    if (m_hasFailed)
        logLine(u"preview             :-( no player");
}

MpvPlayer::~MpvPlayer() = default;

bool MpvPlayer::create(Sound sound)
{
    // The library refuses to work where the decimal sign is no point.
    if (std::setlocale(LC_NUMERIC, nullptr) != "C"sv)
        std::setlocale(LC_NUMERIC, "C");
    m_core.reset(mpv_create());
    if (!m_core)
        return false;
    for (const Option &option : options) {
        if (mpv_set_option_string(m_core.get(), option.name, option.value) < 0)
            logLine(u"preview             :-/ unknown option '%@'", QString::fromLatin1(option.name));
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

    mpv_observe_property(m_core.get(), noReply, "time-pos", MPV_FORMAT_DOUBLE);
    mpv_observe_property(m_core.get(), noReply, "pause", MPV_FORMAT_FLAG);
    mpv_observe_property(m_core.get(), noReply, "eof-reached", MPV_FORMAT_FLAG);
    mpv_observe_property(m_core.get(), noReply, "duration", MPV_FORMAT_DOUBLE);
    mpv_observe_property(m_core.get(), noReply, "file-format", MPV_FORMAT_STRING);
    mpv_observe_property(m_core.get(), noReply, "chapter-list", MPV_FORMAT_NODE);
    mpv_observe_property(m_core.get(), noReply, "track-list", MPV_FORMAT_NODE);
    mpv_observe_property(m_core.get(), noReply, "video-out-params", MPV_FORMAT_NODE);
    // Both callbacks come from the core's threads and may call nothing of the library.
    mpv_set_wakeup_callback(
        m_core.get(),
        [](void *self) {
            QMetaObject::invokeMethod(static_cast<MpvPlayer *>(self), &MpvPlayer::handleEvents,
                                      Qt::QueuedConnection);
        },
        this);
    mpv_render_context_set_update_callback(
        renderer,
        [](void *self) {
            QMetaObject::invokeMethod(static_cast<MpvPlayer *>(self), &MpvPlayer::draw,
                                      Qt::QueuedConnection);
        },
        this);
    return true;
}

void MpvPlayer::command(const QByteArrayList &words, Reply reply)
{
    // Each word is one argument as it stands; nothing is parsed or expanded in it.
    std::vector<const char *> arguments;
    for (const QByteArray &word : words)
        arguments.push_back(word.constData());
    arguments.push_back(nullptr);
    mpv_command_async(m_core.get(), reply, arguments.data());
}

void MpvPlayer::open(const QString &path, double seconds)
{
    if (m_hasFailed) {
        QMetaObject::invokeMethod(this, &MpvPlayer::failed, Qt::QueuedConnection);
        return;
    }
    const QByteArray start = "start=" + QByteArray::number(seconds, 'f', 6);
    command({"loadfile", QFile::encodeName(path), "replace", start});
    m_move = seekMove(seconds);
}

void MpvPlayer::seek(double seconds)
{
    const bool isPastEnd = m_info.duration > 0 && seconds > m_info.duration;
    startMove(seekMove(isPastEnd ? m_info.duration : seconds));
}

void MpvPlayer::step(FrameStep direction)
{
    if (direction == FrameStep::back) {
        startMove({.words = {"frame-back-step"}, .latest = m_position - sameInstant});
        return;
    }
    m_isStepping = true;
    startMove({.words = {"frame-step"}, .latest = std::numeric_limits<double>::max()});
    if (m_isAtEnd)
        QMetaObject::invokeMethod(this, &MpvPlayer::endMove, Qt::QueuedConnection);
}

MpvPlayer::Move MpvPlayer::seekMove(double seconds)
{
    return {.words = {"seek", QByteArray::number(seconds, 'f', 6), "absolute+exact"},
            .latest = seconds + lateSeconds};
}

void MpvPlayer::startMove(const Move &move)
{
    m_move = move;
    m_move->firstRunUp = m_runUp;
    command(move.words, moveReply);
}

/// In a file without an index a seek can land behind the last key frame before its target:
/// the picture is then a later one, or there is none and the position is that of the end.
bool MpvPlayer::retryMove()
{
    const bool isPastPictures = m_info.duration > 0 && m_position > m_info.duration - sameInstant;
    const bool isLate = m_move && (m_position > m_move->latest || isPastPictures);
    if (!isLate || !m_isWithoutIndex)
        return false;
    const bool isLast = m_runUp + 1 == runUps.size();
    // What did not help here would only slow down the moves to come.
    m_runUp = isLast ? m_move->firstRunUp : m_runUp + 1;
    command({"set", "hr-seek-demuxer-offset", QByteArray::number(runUps[m_runUp], 'f', 1)});
    if (!isLast)
        command(m_move->words, moveReply);
    return !isLast;
}

void MpvPlayer::setPaused(bool isPaused)
{
    command({"set", "pause", isPaused ? "yes" : "no"});
}

void MpvPlayer::setMuted(bool isMuted)
{
    command({"set", "mute", isMuted ? "yes" : "no"});
}

void MpvPlayer::setRoom(const QSize &pixels)
{
    if (pixels == m_room)
        return;
    m_room = pixels;
    if (!m_shape.size.isEmpty() && m_renderer)
        Q_EMIT pictureShown(drawnPicture());
}

void MpvPlayer::handleEvents()
{
    while (!m_hasFailed) {
        const mpv_event *event = mpv_wait_event(m_core.get(), 0);
        if (event->event_id == MPV_EVENT_NONE)
            return;
        handle(*event);
    }
}

void MpvPlayer::handle(const mpv_event &event)
{
    switch (event.event_id) {
    case MPV_EVENT_PROPERTY_CHANGE:
        handleProperty(*static_cast<const mpv_event_property *>(event.data));
        break;
    case MPV_EVENT_COMMAND_REPLY:
    case MPV_EVENT_GET_PROPERTY_REPLY:
        handleReply(event);
        break;
    case MPV_EVENT_PLAYBACK_RESTART:
        // The position told last may be that of an earlier picture.
        mpv_get_property_async(m_core.get(), positionReply, "time-pos", MPV_FORMAT_DOUBLE);
        break;
    case MPV_EVENT_END_FILE:
        handleEnd(*static_cast<const mpv_event_end_file *>(event.data));
        break;
    case MPV_EVENT_SHUTDOWN:
        fail();
        break;
    default:
        break;
    }
}

void MpvPlayer::handleReply(const mpv_event &event)
{
    if (event.reply_userdata == moveReply && event.error < 0)
        endMove();
    if (event.reply_userdata != positionReply)
        return;
    const auto *property = static_cast<const mpv_event_property *>(event.data);
    if (event.error >= 0 && property->format == MPV_FORMAT_DOUBLE)
        handlePosition(*static_cast<const double *>(property->data));
    if (!retryMove())
        endMove();
}

void MpvPlayer::handleProperty(const mpv_event_property &property)
{
    const std::string_view name = property.name;
    const void *data = property.data;
    if (property.format == MPV_FORMAT_NONE)
        return;
    if (name == "time-pos"sv) {
        handlePosition(*static_cast<const double *>(data));
        if (m_isStepping)
            endMove();
    } else if (name == "pause"sv) {
        Q_EMIT pausedChanged(*static_cast<const int *>(data) != 0);
    } else if (name == "eof-reached"sv) {
        m_isAtEnd = *static_cast<const int *>(data) != 0;
        if (m_isStepping && m_isAtEnd)
            endMove();
    } else if (name == "file-format"sv) {
        const std::string_view format = *static_cast<const char *const *>(data);
        m_isWithoutIndex = std::find(formatsWithoutIndex.begin(), formatsWithoutIndex.end(),
                                     format) != formatsWithoutIndex.end();
    } else if (name == "video-out-params"sv) {
        setShape(*static_cast<const mpv_node *>(data));
    } else if (name == "duration"sv) {
        m_info.duration = *static_cast<const double *>(data);
        Q_EMIT infoChanged(m_info);
    } else {
        const auto &node = *static_cast<const mpv_node *>(data);
        if (name == "chapter-list"sv)
            m_info.chapters = chapterStarts(node);
        else
            m_info.hasAudio = holdsAudio(node);
        Q_EMIT infoChanged(m_info);
    }
}

void MpvPlayer::handlePosition(double seconds)
{
    m_position = std::max(0.0, seconds);
    Q_EMIT positionChanged(m_position);
}

void MpvPlayer::handleEnd(const mpv_event_end_file &end)
{
    if (end.reason != MPV_END_FILE_REASON_ERROR)
        return;
    logLine(u"preview             :-( %@", QString::fromUtf8(mpv_error_string(end.error)));
    fail();
}

void MpvPlayer::fail()
{
    if (!std::exchange(m_hasFailed, true))
        Q_EMIT failed();
}

void MpvPlayer::endMove()
{
    m_isStepping = false;
    if (std::exchange(m_move, {}))
        Q_EMIT moveEnded(m_position);
}

void MpvPlayer::setShape(const mpv_node &parameters)
{
    m_shape.size = {integer(parameters, "dw"sv), integer(parameters, "dh"sv)};
    m_shape.turn = integer(parameters, "rotate"sv);
    qWarning("shape %d %d turn %d", m_shape.size.width(), m_shape.size.height(), m_shape.turn);
    if (!m_shape.size.isEmpty())
        Q_EMIT pictureShown(drawnPicture());
}

void MpvPlayer::draw()
{
    // The shape of the first picture comes after the picture itself.
    const auto changes = mpv_render_context_update(m_renderer.get());
    if ((changes & MPV_RENDER_UPDATE_FRAME) && !m_shape.size.isEmpty())
        Q_EMIT pictureShown(drawnPicture());
}

QImage MpvPlayer::drawnPicture()
{
    const bool isOnItsSide = m_shape.turn % 180 != 0;
    const QSize room = isOnItsSide ? m_room.transposed() : m_room;
    const QSize size = m_shape.size.scaled(room, Qt::KeepAspectRatio).expandedTo({1, 1});
    QImage picture(size, QImage::Format_RGB32);
    int sides[] = {size.width(), size.height()};
    std::string format = "bgr0";
    size_t stride = static_cast<size_t>(picture.bytesPerLine());
    int mayBlock = 0;
    renderWith(m_renderer.get(), mpv_render_param{MPV_RENDER_PARAM_SW_SIZE, sides},
               mpv_render_param{MPV_RENDER_PARAM_SW_FORMAT, format.data()},
               mpv_render_param{MPV_RENDER_PARAM_SW_STRIDE, &stride},
               mpv_render_param{MPV_RENDER_PARAM_SW_POINTER, picture.bits()},
               mpv_render_param{MPV_RENDER_PARAM_BLOCK_FOR_TARGET_TIME, &mayBlock});
    return m_shape.turn == 0 ? picture : picture.transformed(QTransform().rotate(m_shape.turn));
}

} // namespace vignar
