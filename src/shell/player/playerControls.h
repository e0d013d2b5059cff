#pragma once

#include "shell/player/mediaPlayer.h"
#include "shell/player/playerCommands.h"
#include "shell/player/timeline.h"

#include <QHash>

class QAbstractButton;
class QHBoxLayout;
class QLabel;
class QPushButton;

namespace vignar
{

/// What stands under the picture: the time axis, the buttons of a player, and the place
/// that the picture would take on the sheet.
class PlayerControls : public QWidget
{
    Q_OBJECT

public:
    explicit PlayerControls(QWidget *parent = nullptr);

    void setInfo(const MediaInfo &info);
    void setPosition(double seconds);
    void setPictures(const PlannedPictures &pictures);
    void setPaused(bool isPaused);
    void setMuted(bool isMuted);
    /// Off while there is nothing to play.
    void setPlayable(bool isPlayable);

    const Timeline &timeline() const { return *m_timeline; }

Q_SIGNALS:
    void commanded(vignar::PlayerCommand command);
    void seekWanted(double seconds);

private:
    QAbstractButton *addButton(QHBoxLayout &row, PlayerCommand command);
    QWidget *transportRow();
    QHBoxLayout *sheetRow();
    void connectButton(QAbstractButton &button, PlayerCommand command);
    void updateTime();
    void updatePlace();
    void updateButtons();

    Timeline *m_timeline;
    QLabel *m_time;
    QLabel *m_place;
    QPushButton *m_use;
    QPushButton *m_reset;
    QHash<PlayerCommand, QAbstractButton *> m_buttons;
    PlannedPictures m_pictures;
    MediaInfo m_info;
    double m_position = 0;
    bool m_isPlayable = false;
};

} // namespace vignar
