#include "shell/player/mpvPlayer.h"

#include "classShared/lineLog.h"
#include "shell/player/mpvNodes.h"

#include <QFile>
#include <QTransform>

#include <mpv/client.h>

#include <algorithm>
#include <array>
#include <limits>

namespace vignar
{

using namespace std::string_view_literals;

namespace
{

/// Seconds before a wanted picture at which decoding starts in a file that needs it.
constexpr std::array runUps{0.0, 2.0, 12.0, 30.0};

/// Later than this is not just the next picture.
constexpr double lateSeconds = 0.1;

/// From here on there is nothing left to play.
constexpr double endSeconds = 0.25;

/// Sound that joins in later than this before the end may find nothing more to play, and then
/// the core waits for it and never comes to the end.
constexpr double leastSoundSeconds = 1.5;

/// Less than the time of one picture.
constexpr double sameInstant = 0.001;

constexpr QSize smallestPicture(2, 2);

/// The formats that hold no index: a seek in them goes by time stamps.
constexpr std::array formatsWithoutIndex{"mpegts"sv, "mpeg"sv, "mpegvideo"sv, "h264"sv, "hevc"sv};

} // namespace

MpvPlayer::MpvPlayer(Sound sound, QObject *parent) : MediaPlayer(parent)
{
    const auto queued = [this](void (MpvPlayer::*method)()) {
        return [this, method] { QMetaObject::invokeMethod(this, method, Qt::QueuedConnection); };
    };
    m_core = MpvCore::create(sound,
                             {queued(&MpvPlayer::handleEvents), queued(&MpvPlayer::handlePicture)});
    if (!m_core)
        logLine(u"player              :-( does not start");
}

void MpvPlayer::command(const QByteArrayList &words, Reply reply)
{
    if (m_core)
        m_core->command(words, reply);
}

void MpvPlayer::open(const QString &path, double seconds)
{
    if (!m_core) {
        QMetaObject::invokeMethod(this, &MpvPlayer::failed, Qt::QueuedConnection);
        return;
    }
    const QByteArray start = "start=" + QByteArray::number(seconds, 'f', 6);
    command({"loadfile", QFile::encodeName(path), "replace", start}, moveReply);
    m_move = seekMove(seconds);
}

void MpvPlayer::seek(double seconds)
{
    const bool isPastEnd = m_info.duration > 0 && seconds > m_info.duration;
    startMove(seekMove(isPastEnd ? m_info.duration : seconds));
}

void MpvPlayer::step(FrameStep direction)
{
    m_isToPlay = false;
    if (direction == FrameStep::back) {
        startMove({.words = {"frame-back-step"}, .latest = m_position - sameInstant});
    } else if (m_isAtEnd) {
        m_move = Move();
        QMetaObject::invokeMethod(this, &MpvPlayer::endMove, Qt::QueuedConnection);
    } else {
        m_isStepping = true;
        startMove({.words = {"frame-step"}, .latest = std::numeric_limits<double>::max()});
    }
}

MpvPlayer::Move MpvPlayer::seekMove(double seconds)
{
    return {.words = {"seek", QByteArray::number(seconds, 'f', 6), "absolute+exact"},
            .latest = seconds + lateSeconds};
}

void MpvPlayer::startMove(const Move &move)
{
    m_move = move;
    m_move->from = m_position;
    m_move->firstRunUp = m_runUp;
    command(move.words, moveReply);
}

/// In a file without an index a seek can land behind the last key frame before its target:
/// the picture is then a later one, or there is none and the core is at the end.
bool MpvPlayer::retryMove()
{
    const bool isLate = m_position > m_move->latest || m_isAtEnd;
    if (!isLate || !m_isWithoutIndex)
        return false;
    const bool isLast = m_runUp + 1 == runUps.size();
    // What did not help here would only slow down the moves to come.
    m_runUp = isLast ? m_move->firstRunUp : m_runUp + 1;
    command({"set", "hr-seek-demuxer-offset", QByteArray::number(runUps[m_runUp], 'f', 1)});
    if (isLast)
        return false;
    m_move->isSureOfEnd = false;
    command(m_move->words, moveReply);
    return true;
}

/// The core has told where it has arrived.
void MpvPlayer::settleMove()
{
    if (!m_move)
        return;
    // At the end it goes on to look for the last picture, and would take a new seek for
    // that one.
    if (m_isAtEnd && !std::exchange(m_move->isSureOfEnd, true)) {
        m_core->askPlace(positionReply);
        return;
    }
    if (retryMove())
        return;
    // There was no picture to show: that of before is still there.
    if (m_isAtEnd && m_isWithoutIndex)
        handlePosition(m_move->from);
    endMove();
}

void MpvPlayer::setPaused(bool isPaused)
{
    m_isToPlay = !isPaused;
    if (isPaused)
        command({"set", "pause", "yes"});
    else if (!m_move && isNothingLeft())
        startMove({.words = seekMove(0).words, .latest = lateSeconds, .isTold = false});
    else
        playOn();
}

bool MpvPlayer::isNothingLeft() const
{
    return m_isAtEnd || (m_info.duration > 0 && m_position > m_info.duration - endSeconds);
}

/// Plays as soon as nothing moves: the sound that joins in makes the core seek by itself,
/// and that in the middle of a move would end it somewhere else.
void MpvPlayer::playOn()
{
    if (!m_isToPlay || m_move)
        return;
    if (m_info.duration <= 0 || m_position < m_info.duration - leastSoundSeconds)
        command({"set", "aid", "auto"});
    command({"set", "pause", "no"});
}

void MpvPlayer::handlePause(bool isPaused)
{
    // A forward step plays for the time of one picture.
    if (!isPaused && m_isStepping)
        return;
    if (isPaused) {
        m_isToPlay = false;
        command({"set", "aid", "no"});
    }
    Q_EMIT pausedChanged(isPaused);
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
    showPicture();
}

void MpvPlayer::handleEvents()
{
    while (m_core) {
        const mpv_event *event = m_core->nextEvent();
        if (!event)
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
        if (m_move && std::exchange(m_move->isTakenUp, false) && !m_isStepping)
            m_core->askPlace(positionReply);
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
    if (event.event_id == MPV_EVENT_GET_PROPERTY_REPLY && event.error >= 0)
        handleProperty(*static_cast<const mpv_event_property *>(event.data));
    if (event.reply_userdata == positionReply) {
        settleMove();
    } else if (event.reply_userdata == moveReply && m_move) {
        m_move->isTakenUp = true;
        if (event.error < 0)
            endMove();
    }
}

void MpvPlayer::handleProperty(const mpv_event_property &property)
{
    const std::string_view name = property.name;
    const void *data = property.data;
    if (property.format == MPV_FORMAT_NONE)
        return;
    if (name == "time-pos"sv) {
        handlePosition(*static_cast<const double *>(data));
        // What was told before the step may arrive after it.
        if (m_isStepping && std::abs(m_position - m_move->from) > sameInstant)
            endMove();
    } else if (name == "pause"sv) {
        handlePause(*static_cast<const int *>(data) != 0);
    } else if (name == "eof-reached"sv) {
        m_isAtEnd = *static_cast<const int *>(data) != 0;
        if (m_isStepping && m_isAtEnd)
            endMove();
    } else if (name == "video-out-params"sv) {
        m_size = pictureSize(*static_cast<const mpv_node *>(data));
        showPicture();
    } else {
        handleInfo(name, data);
    }
}

void MpvPlayer::handleInfo(std::string_view name, const void *data)
{
    if (name == "file-format"sv) {
        const std::string_view format = *static_cast<const char *const *>(data);
        m_isWithoutIndex = std::find(formatsWithoutIndex.begin(), formatsWithoutIndex.end(),
                                     format) != formatsWithoutIndex.end();
        return;
    }
    if (name == "duration"sv) {
        m_info.duration = *static_cast<const double *>(data);
    } else if (name == "chapter-list"sv) {
        m_info.chapters = chapterStarts(*static_cast<const mpv_node *>(data));
    } else {
        m_turns = quarterTurns(*static_cast<const mpv_node *>(data));
        m_info.hasAudio = holdsAudio(*static_cast<const mpv_node *>(data));
    }
    Q_EMIT infoChanged(m_info);
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
    logLine(u"player              :-( %@", QString::fromUtf8(mpv_error_string(end.error)));
    fail();
}

void MpvPlayer::fail()
{
    m_isStepping = false;
    m_move.reset();
    // The event being handled is the core's.
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (std::exchange(m_core, nullptr))
                Q_EMIT failed();
        },
        Qt::QueuedConnection);
}

void MpvPlayer::endMove()
{
    m_isStepping = false;
    const auto ended = std::exchange(m_move, {});
    if (ended && ended->isTold)
        Q_EMIT moveEnded(m_position);
    playOn();
}

void MpvPlayer::handlePicture()
{
    if (m_core && m_core->hasNewPicture())
        showPicture();
}

void MpvPlayer::showPicture()
{
    // The size of the first picture comes after the picture itself.
    if (!m_core || m_size.isEmpty() || m_room.isEmpty())
        return;
    const QSize room = m_turns % 2 == 0 ? m_room : m_room.transposed();
    const QImage picture =
        m_core->picture(m_size.scaled(room, Qt::KeepAspectRatio).expandedTo(smallestPicture));
    Q_EMIT pictureShown(m_turns == 0 ? picture
                                     : picture.transformed(QTransform().rotate(m_turns * 90)));
}

} // namespace vignar
