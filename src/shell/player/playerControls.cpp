#include "shell/player/playerControls.h"

#include "classShared/format.h"
#include "settings/stringTables.h"
#include "shell/icons.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr QSize iconSize(20, 20);
constexpr QSize largeIconSize(28, 28);
constexpr QSize smallestButton(34, 34);
constexpr int gap = 8;

QIcon iconOf(const char *name)
{
    return ownIcon(QString::fromLatin1(name));
}

/// A sign, a number and a unit, in this order in every language.
QString leftToRight(const QString &text)
{
    return u'\u2066' + text + u'\u2069';
}

} // namespace

PlayerControls::PlayerControls(QWidget *parent)
    : QWidget(parent),
      m_timeline(new Timeline),
      m_time(new QLabel),
      m_place(new QLabel),
      m_use(new QPushButton(localised(u"V_player_use"_s))),
      m_reset(new QPushButton(localised(u"V_player_reset"_s)))
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(12, gap, 12, 12);
    column->setSpacing(gap);
    m_timeline->setAccessibleName(localised(u"V_player_position"_s));
    column->addWidget(m_timeline);
    column->addWidget(transportRow());
    column->addLayout(sheetRow());
    connect(m_timeline, &Timeline::seekWanted, this, &PlayerControls::seekWanted);
    setPaused(true);
    setMuted(false);
    updateTime();
    updatePlace();
    updateButtons();
}

QAbstractButton *PlayerControls::addButton(QHBoxLayout &row, PlayerCommand command)
{
    const CommandWay &way = wayOf(command);
    auto *button = new QToolButton;
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::StrongFocus);
    button->setIconSize(iconSize);
    if (way.icon)
        button->setIcon(iconOf(way.icon));
    else
        button->setText(leftToRight(localised(QString::fromLatin1(way.shortName))));
    button->setMinimumSize(button->sizeHint().expandedTo(smallestButton));
    row.addWidget(button);
    m_buttons.insert(command, button);
    connectButton(*button, command);
    return button;
}

void PlayerControls::connectButton(QAbstractButton &button, PlayerCommand command)
{
    button.setAccessibleName(commandName(wayOf(command)));
    button.setToolTip(commandTip(wayOf(command)));
    connect(&button, &QAbstractButton::clicked, this,
            [this, command] { Q_EMIT commanded(command); });
}

QWidget *PlayerControls::transportRow()
{
    using enum PlayerCommand;
    auto *transport = new QWidget;
    // Time runs from left to right on every player, whatever the language.
    transport->setLayoutDirection(Qt::LeftToRight);
    m_timeline->setLayoutDirection(Qt::LeftToRight);
    auto *row = new QHBoxLayout(transport);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(2);
    m_time->setMinimumWidth(
        m_time->fontMetrics().horizontalAdvance(u"00:00:00.00 / 00:00:00.00"_s));
    row->addWidget(m_time, 1);
    for (const PlayerCommand command : {chapterBack, tenBack, secondBack, frameBack, playPause,
                                        frameForward, secondForward, tenForward, chapterForward})
        addButton(*row, command);
    m_buttons.value(playPause)->setIconSize(largeIconSize);
    m_buttons.value(playPause)->setObjectName(u"play"_s);
    auto *trailing = new QHBoxLayout;
    trailing->addStretch();
    addButton(*trailing, mute);
    row->addLayout(trailing, 1);
    return transport;
}

QHBoxLayout *PlayerControls::sheetRow()
{
    using enum PlayerCommand;
    auto *row = new QHBoxLayout;
    row->setSpacing(gap);
    auto *arrows = new QWidget;
    arrows->setLayoutDirection(Qt::LeftToRight);
    auto *pair = new QHBoxLayout(arrows);
    pair->setContentsMargins(0, 0, 0, 0);
    pair->setSpacing(0);
    addButton(*pair, pictureBack);
    addButton(*pair, pictureForward);
    row->addWidget(arrows);
    m_place->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_place->setWordWrap(true);
    row->addWidget(m_place, 1);
    row->addWidget(m_reset);
    row->addWidget(m_use);
    connectButton(*m_reset, reset);
    connectButton(*m_use, use);
    return row;
}

void PlayerControls::setInfo(const MediaInfo &info)
{
    m_info = info;
    m_timeline->setDuration(info.duration);
    updateTime();
    updateButtons();
}

void PlayerControls::setPosition(double seconds)
{
    m_position = seconds;
    m_timeline->setPosition(seconds);
    updateTime();
    updatePlace();
}

void PlayerControls::setPictures(const PlannedPictures &pictures)
{
    m_pictures = pictures;
    m_timeline->setPictures(pictures);
    updatePlace();
    updateButtons();
}

void PlayerControls::setPaused(bool isPaused)
{
    QAbstractButton *button = m_buttons.value(PlayerCommand::playPause);
    const QString name = localised(isPaused ? u"V_player_play"_s : u"V_player_pause"_s);
    button->setIcon(iconOf(isPaused ? "media-playback-start" : "media-playback-pause"));
    button->setAccessibleName(name);
    button->setToolTip(
        commandTip(wayOf(PlayerCommand::playPause)).replace(localised(u"V_player_play"_s), name));
}

void PlayerControls::setMuted(bool isMuted)
{
    m_buttons.value(PlayerCommand::mute)
        ->setIcon(iconOf(isMuted ? "audio-volume-muted" : "audio-volume-high"));
}

void PlayerControls::setPlayable(bool isPlayable)
{
    m_isPlayable = isPlayable;
    updateButtons();
}

void PlayerControls::updateTime()
{
    m_time->setText(
        leftToRight(u"%1 / %2"_s.arg(clockText(m_position), clockText(m_info.duration))));
}

void PlayerControls::updatePlace()
{
    const int index = m_timeline->nearest();
    if (index < 0) {
        m_place->setText(localised(u"V_player_noPlan"_s));
        return;
    }
    const bool isChosen = m_pictures.chosen.contains(index);
    m_place->setText(filled(localised(isChosen ? u"V_player_chosen"_s : u"V_player_planned"_s),
                            index + 1, static_cast<int>(m_pictures.instants.size()),
                            clockText(m_pictures.instant(index))));
    m_reset->setEnabled(m_isPlayable && isChosen);
}

void PlayerControls::updateButtons()
{
    using enum PlayerCommand;
    for (QAbstractButton *button : std::as_const(m_buttons))
        button->setEnabled(m_isPlayable);
    const bool hasChapters = !m_info.chapters.isEmpty();
    const bool hasPictures = !m_pictures.instants.empty();
    const auto enable = [this](PlayerCommand command, bool isPossible) {
        m_buttons.value(command)->setEnabled(m_isPlayable && isPossible);
    };
    enable(chapterBack, hasChapters);
    enable(chapterForward, hasChapters);
    enable(mute, m_info.hasAudio);
    enable(pictureBack, hasPictures);
    enable(pictureForward, hasPictures);
    m_timeline->setEnabled(m_isPlayable);
    m_use->setEnabled(m_isPlayable && hasPictures);
    m_reset->setEnabled(m_isPlayable && m_pictures.chosen.contains(m_timeline->nearest()));
}

} // namespace vignar
