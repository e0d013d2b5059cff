#pragma once

#include <QString>

#include <optional>
#include <span>

class QKeyEvent;

namespace vignar
{

enum class PlayerCommand {
    playPause,
    frameBack,
    frameForward,
    secondBack,
    secondForward,
    tenBack,
    tenForward,
    chapterBack,
    chapterForward,
    pictureBack,
    pictureForward,
    toStart,
    toEnd,
    mute,
    use,
    reset,
    close
};

/// A command and how to give it.
struct CommandWay {
    PlayerCommand command;
    /// A Qt::Key with its modifiers.
    int key;
    /// The key of its name in the string tables.
    const char *name;
    /// Of a drawing in the resources, or null.
    const char *icon;
    /// Words on its button where it has no icon, or null: a key of the string tables.
    const char *shortName;
};

/// Every command once, in the order of the buttons.
std::span<const CommandWay> commandWays();
const CommandWay &wayOf(PlayerCommand command);

/// What a key press asks for.
std::optional<PlayerCommand> commandOf(const QKeyEvent &press);

QString commandName(const CommandWay &way);
/// "Next frame (.)".
QString commandTip(const CommandWay &way);

} // namespace vignar
