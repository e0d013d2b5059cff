#include "shell/player/playerCommands.h"

#include "settings/stringTables.h"

#include <QKeyEvent>
#include <QKeySequence>

#include <algorithm>
#include <array>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

using enum PlayerCommand;
constexpr int shift = Qt::ShiftModifier;

constexpr std::array ways{
    CommandWay{chapterBack, Qt::Key_PageUp, "V_player_chapterBack", "media-skip-backward", nullptr},
    CommandWay{tenBack, shift | Qt::Key_Left, "V_player_tenBack", nullptr, "V_player_tenBackShort"},
    CommandWay{secondBack, Qt::Key_Left, "V_player_secondBack", nullptr,
               "V_player_secondBackShort"},
    CommandWay{frameBack, Qt::Key_Comma, "V_player_frameBack", "frame-back", nullptr},
    CommandWay{playPause, Qt::Key_Space, "V_player_play", "media-playback-start", nullptr},
    CommandWay{frameForward, Qt::Key_Period, "V_player_frameForward", "frame-forward", nullptr},
    CommandWay{secondForward, Qt::Key_Right, "V_player_secondForward", nullptr,
               "V_player_secondForwardShort"},
    CommandWay{tenForward, shift | Qt::Key_Right, "V_player_tenForward", nullptr,
               "V_player_tenForwardShort"},
    CommandWay{chapterForward, Qt::Key_PageDown, "V_player_chapterForward", "media-skip-forward",
               nullptr},
    CommandWay{mute, Qt::Key_M, "V_player_mute", "audio-volume-high", nullptr},
    CommandWay{pictureBack, Qt::Key_Up, "V_player_pictureBack", "go-previous", nullptr},
    CommandWay{pictureForward, Qt::Key_Down, "V_player_pictureForward", "go-next", nullptr},
    CommandWay{toStart, Qt::Key_Home, "V_player_toStart", nullptr, nullptr},
    CommandWay{toEnd, Qt::Key_End, "V_player_toEnd", nullptr, nullptr},
    CommandWay{reset, Qt::Key_Backspace, "V_player_reset", nullptr, nullptr},
    CommandWay{use, Qt::Key_Return, "V_player_use", nullptr, nullptr},
    CommandWay{close, Qt::Key_Escape, "V_player_close", nullptr, nullptr},
};

/// Where comma or period is a shifted key the shift says nothing.
bool isPunctuation(int key)
{
    return key == Qt::Key_Comma || key == Qt::Key_Period;
}

} // namespace

std::span<const CommandWay> commandWays()
{
    return ways;
}

const CommandWay &wayOf(PlayerCommand command)
{
    return *std::find_if(ways.begin(), ways.end(),
                         [command](const CommandWay &way) { return way.command == command; });
}

std::optional<PlayerCommand> commandOf(const QKeyEvent &press)
{
    Qt::KeyboardModifiers modifiers = press.modifiers() & ~Qt::KeypadModifier;
    int key = press.key() == Qt::Key_Enter ? Qt::Key_Return : press.key();
    if (isPunctuation(key))
        modifiers &= ~Qt::ShiftModifier;
    if (key == Qt::Key_W && modifiers == Qt::ControlModifier)
        return close;
    key |= static_cast<int>(modifiers);
    const auto way = std::find_if(ways.begin(), ways.end(),
                                  [key](const CommandWay &each) { return each.key == key; });
    return way == ways.end() ? std::nullopt : std::optional(way->command);
}

QString commandName(const CommandWay &way)
{
    return localised(QString::fromLatin1(way.name)).remove(u'&');
}

QString commandTip(const CommandWay &way)
{
    return u"%1 (%2)"_s.arg(commandName(way),
                            QKeySequence(way.key).toString(QKeySequence::NativeText));
}

} // namespace vignar
