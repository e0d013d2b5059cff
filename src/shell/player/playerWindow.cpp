#include "shell/player/playerWindow.h"

#include "settings/stringTables.h"
#include "shell/player/pictureView.h"
#include "shell/player/playerControls.h"
#include "shell/windowPlaces.h"

#include <QAbstractButton>
#include <QFileInfo>
#include <QKeyEvent>
#include <QVBoxLayout>

#include <algorithm>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

const QString placeName = u"player"_s;

/// Within its first second a chapter is left for the one before it.
constexpr double chapterGrace = 1;
/// Instants this close are the same.
constexpr double sameInstant = 0.001;

/// The closest of the instants on one side of a place.
template <class Instants>
std::optional<double> neighbour(const Instants &instants, double place, FrameStep direction)
{
    std::optional<double> found;
    for (const double instant : instants) {
        if (direction == FrameStep::back && instant < place - sameInstant)
            found = std::max(found.value_or(instant), instant);
        if (direction == FrameStep::forward && instant > place + sameInstant)
            found = std::min(found.value_or(instant), instant);
    }
    return found;
}

} // namespace

PlayerWindow::PlayerWindow(PlayerMaker makePlayer, QWidget *parent)
    : QWidget(parent, Qt::Window),
      m_makePlayer(std::move(makePlayer)),
      m_view(new PictureView),
      m_controls(new PlayerControls)
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_view, 1);
    column->addWidget(m_controls);
    m_view->setAccessibleName(localised(u"V_player_picture"_s));
    connect(m_view, &PictureView::clicked, this, &PlayerWindow::togglePlay);
    connect(m_view, &PictureView::roomChanged, this, [this](const QSize &room) {
        if (m_player)
            m_player->setRoom(room);
    });
    connect(m_controls, &PlayerControls::seekWanted, this, &PlayerWindow::seek);
    connect(m_controls, &PlayerControls::commanded, this,
            [this](PlayerCommand command) { perform(command); });
    const QList<QWidget *> children = findChildren<QWidget *>();
    for (QWidget *child : children)
        child->installEventFilter(this);
    restoreWindowPlace(*this, placeName);
}

PlayerWindow::~PlayerWindow() = default;

void PlayerWindow::open(const QString &path, const QImage &poster, double duration,
                        const PlannedPictures &pictures)
{
    endPlayer();
    m_path = path;
    m_info = {.duration = duration};
    setWindowTitle(QFileInfo(path).fileName());
    setWindowFilePath(path);
    m_view->setPoster(poster);
    m_view->setMessage({});
    m_controls->setInfo(m_info);
    setPictures(pictures);
    if (!QFileInfo::exists(path)) {
        m_view->setMessage(localised(u"V_row_missing"_s));
        return;
    }
    startPlayer();
    const double start = pictures.instants.empty() ? 0 : pictures.instant(0);
    m_controls->setPosition(start);
    m_queue->open(QFileInfo(path).absoluteFilePath(), start);
}

void PlayerWindow::startPlayer()
{
    m_player = m_makePlayer();
    m_queue = std::make_unique<MoveQueue>(*m_player);
    connect(m_queue.get(), &MoveQueue::settled, this, &PlayerWindow::handleSettled);
    connect(m_player.get(), &MediaPlayer::failed, this, &PlayerWindow::handleFailure);
    connect(m_player.get(), &MediaPlayer::pictureShown, m_view, &PictureView::setPicture);
    connect(m_player.get(), &MediaPlayer::positionChanged, this, [this](double seconds) {
        m_position = seconds;
        m_controls->setPosition(seconds);
    });
    connect(m_player.get(), &MediaPlayer::infoChanged, this, [this](const MediaInfo &info) {
        const double known = m_info.duration;
        m_info = info;
        if (info.duration <= 0)
            m_info.duration = known;
        m_controls->setInfo(m_info);
    });
    connect(m_player.get(), &MediaPlayer::pausedChanged, this, &PlayerWindow::setPaused);
    m_player->setRoom(m_view->room());
    m_player->setMuted(m_isMuted);
    m_controls->setPlayable(true);
}

void PlayerWindow::endPlayer()
{
    m_queue.reset();
    m_player.reset();
    m_controls->setPlayable(false);
    setPaused(true);
    m_settledAt.reset();
    m_asked.reset();
    m_isUsing = false;
    m_position = 0;
}

void PlayerWindow::setPictures(const PlannedPictures &pictures)
{
    m_pictures = pictures;
    m_controls->setPictures(pictures);
}

void PlayerWindow::setPaused(bool isPaused)
{
    m_isPaused = isPaused;
    if (!isPaused) {
        m_settledAt.reset();
        m_asked.reset();
    }
    m_controls->setPaused(isPaused);
}

bool PlayerWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress)
        return handleKey(*watched, *static_cast<QKeyEvent *>(event));
    return QWidget::eventFilter(watched, event);
}

void PlayerWindow::keyPressEvent(QKeyEvent *event)
{
    if (!handleKey(*this, *event))
        QWidget::keyPressEvent(event);
}

bool PlayerWindow::handleKey(QObject &watched, const QKeyEvent &press)
{
    const auto command = commandOf(press);
    if (!command)
        return false;
    // A button that has the focus is pressed by the keys that press buttons.
    if (auto *button = qobject_cast<QAbstractButton *>(&watched)) {
        if (command == PlayerCommand::playPause)
            return false;
        if (command == PlayerCommand::use) {
            button->click();
            return true;
        }
    }
    perform(*command, press.isAutoRepeat());
    return true;
}

void PlayerWindow::perform(PlayerCommand command, bool isRepeated)
{
    if (command == PlayerCommand::close) {
        close();
        return;
    }
    if (!m_queue)
        return;
    switch (command) {
    case PlayerCommand::playPause:
        return togglePlay();
    case PlayerCommand::frameBack:
        return step(FrameStep::back, isRepeated);
    case PlayerCommand::frameForward:
        return step(FrameStep::forward, isRepeated);
    case PlayerCommand::secondBack:
        return seek(place() - 1);
    case PlayerCommand::secondForward:
        return seek(place() + 1);
    case PlayerCommand::tenBack:
        return seek(place() - 10);
    case PlayerCommand::tenForward:
        return seek(place() + 10);
    case PlayerCommand::chapterBack:
        return seekToChapter(FrameStep::back);
    case PlayerCommand::chapterForward:
        return seekToChapter(FrameStep::forward);
    case PlayerCommand::pictureBack:
        return seekToPicture(FrameStep::back);
    case PlayerCommand::pictureForward:
        return seekToPicture(FrameStep::forward);
    case PlayerCommand::toStart:
        return seek(0);
    case PlayerCommand::toEnd:
        return seek(m_info.duration);
    case PlayerCommand::mute:
        return toggleMute();
    case PlayerCommand::use:
        return useShown();
    case PlayerCommand::reset:
        return resetNearest();
    case PlayerCommand::close:
        return;
    }
}

double PlayerWindow::place() const
{
    if (const auto destination = m_queue->destination())
        return *destination;
    return m_asked.value_or(m_position);
}

void PlayerWindow::seek(double seconds)
{
    if (!m_queue)
        return;
    m_settledAt.reset();
    m_asked = std::clamp(seconds, 0.0, std::max(0.0, m_info.duration));
    m_controls->setPosition(*m_asked);
    m_queue->seek(*m_asked);
}

void PlayerWindow::step(FrameStep direction, bool isRepeated)
{
    // A key held down must not leave a tail of steps behind when it is let go.
    if (isRepeated && m_queue->isMoving())
        return;
    m_settledAt.reset();
    m_asked.reset();
    m_queue->step(direction);
}

void PlayerWindow::seekToChapter(FrameStep direction)
{
    const double grace = direction == FrameStep::back ? chapterGrace : 0;
    const auto chapter = neighbour(m_info.chapters, place() - grace, direction);
    if (chapter || (direction == FrameStep::back && !m_info.chapters.isEmpty()))
        seek(chapter.value_or(0));
}

void PlayerWindow::seekToPicture(FrameStep direction)
{
    std::vector<double> shown;
    for (int index = 0; index < static_cast<int>(m_pictures.instants.size()); ++index)
        shown.push_back(m_pictures.instant(index));
    if (const auto instant = neighbour(shown, place(), direction))
        seek(*instant);
}

void PlayerWindow::togglePlay()
{
    if (!m_player)
        return;
    setPaused(!m_isPaused);
    m_player->setPaused(m_isPaused);
}

void PlayerWindow::toggleMute()
{
    m_isMuted = !m_isMuted;
    m_player->setMuted(m_isMuted);
    m_controls->setMuted(m_isMuted);
}

void PlayerWindow::useShown()
{
    if (m_pictures.instants.empty())
        return;
    m_isUsing = true;
    if (!m_isPaused) {
        // What runs on is no longer the picture that was on show when the user chose it.
        const double shown = place();
        togglePlay();
        m_queue->seek(shown);
    } else if (m_settledAt) {
        handleSettled(*m_settledAt);
    } else if (!m_queue->isMoving()) {
        m_queue->seek(m_position);
    }
}

void PlayerWindow::handleSettled(double seconds)
{
    if (m_isPaused)
        m_settledAt = seconds;
    m_view->setMessage({});
    if (std::exchange(m_isUsing, false)) {
        ChosenInstants chosen = m_pictures.chosen;
        chosen.insert(nearestInstant(m_pictures.instants, seconds), seconds);
        setChosen(chosen);
    }
    Q_EMIT settled(seconds);
}

void PlayerWindow::resetNearest()
{
    ChosenInstants chosen = m_pictures.chosen;
    if (chosen.remove(m_controls->timeline().nearest()) > 0)
        setChosen(chosen);
}

void PlayerWindow::setChosen(const ChosenInstants &chosen)
{
    setPictures({m_pictures.instants, chosen});
    Q_EMIT chosenChanged(chosen);
}

void PlayerWindow::handleFailure()
{
    m_view->setMessage(localised(u"V_player_failed"_s));
    m_controls->setPlayable(false);
}

void PlayerWindow::closeEvent(QCloseEvent *event)
{
    saveWindowPlace(*this, placeName);
    endPlayer();
    QWidget::closeEvent(event);
}

} // namespace vignar
