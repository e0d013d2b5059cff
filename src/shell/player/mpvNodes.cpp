#include "shell/player/mpvNodes.h"

#include <mpv/client.h>

#include <algorithm>
#include <span>
#include <string_view>

namespace vignar
{

using namespace std::string_view_literals;

namespace
{

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

bool isOfType(const mpv_node &track, std::string_view name)
{
    const mpv_node *type = member(track, "type"sv);
    return type && type->format == MPV_FORMAT_STRING && type->u.string == name;
}

} // namespace

QSize pictureSize(const mpv_node &parameters)
{
    return {integer(parameters, "dw"sv), integer(parameters, "dh"sv)};
}

int quarterTurns(const mpv_node &tracks)
{
    const auto all = elements(tracks);
    const auto shown = std::find_if(all.begin(), all.end(), [](const mpv_node &track) {
        const mpv_node *selected = member(track, "selected"sv);
        return isOfType(track, "video"sv) && selected && selected->format == MPV_FORMAT_FLAG &&
               selected->u.flag != 0;
    });
    const int degrees = shown == all.end() ? 0 : integer(*shown, "demux-rotation"sv);
    return degrees % 90 == 0 ? degrees / 90 % 4 : 0;
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
    return std::any_of(all.begin(), all.end(),
                       [](const mpv_node &track) { return isOfType(track, "audio"sv); });
}

} // namespace vignar
