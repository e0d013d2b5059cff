// The functions of libmpv that the player uses, each of which looks for the library's own when it
// is first called. Linked, the library and the two hundred that come with it would be loaded
// before the window, which takes as long as all the rest of a start.

#include "classShared/lineLog.h"

#include <QLibrary>

#include <mpv/client.h>
#include <mpv/render.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr int interfaceVersion = 2;

QFunctionPointer found(const char *name)
{
    static QLibrary library(u"mpv"_s, interfaceVersion);
    const QFunctionPointer function = library.resolve(name);
    if (!function)
        vignar::logLine(u"player              :-( %@", library.errorString());
    return function;
}

/// Without the library mpv_create() gives no core, and nothing else is called.
template <auto declared, class... Arguments>
auto forwarded(const char *name, Arguments... arguments)
{
    using Result = decltype(declared(arguments...));
    static const auto function = reinterpret_cast<decltype(declared)>(found(name));
    return function ? function(arguments...) : Result();
}

} // namespace

extern "C" {

mpv_handle *mpv_create()
{
    return forwarded<mpv_create>("mpv_create");
}

int mpv_initialize(mpv_handle *core)
{
    return forwarded<mpv_initialize>("mpv_initialize", core);
}

void mpv_terminate_destroy(mpv_handle *core)
{
    forwarded<mpv_terminate_destroy>("mpv_terminate_destroy", core);
}

void mpv_free(void *data)
{
    forwarded<mpv_free>("mpv_free", data);
}

const char *mpv_error_string(int error)
{
    return forwarded<mpv_error_string>("mpv_error_string", error);
}

int mpv_set_option_string(mpv_handle *core, const char *name, const char *value)
{
    return forwarded<mpv_set_option_string>("mpv_set_option_string", core, name, value);
}

char *mpv_get_property_string(mpv_handle *core, const char *name)
{
    return forwarded<mpv_get_property_string>("mpv_get_property_string", core, name);
}

int mpv_get_property_async(mpv_handle *core, uint64_t reply, const char *name, mpv_format format)
{
    return forwarded<mpv_get_property_async>("mpv_get_property_async", core, reply, name, format);
}

int mpv_observe_property(mpv_handle *core, uint64_t reply, const char *name, mpv_format format)
{
    return forwarded<mpv_observe_property>("mpv_observe_property", core, reply, name, format);
}

int mpv_command_async(mpv_handle *core, uint64_t reply, const char **words)
{
    return forwarded<mpv_command_async>("mpv_command_async", core, reply, words);
}

mpv_event *mpv_wait_event(mpv_handle *core, double seconds)
{
    return forwarded<mpv_wait_event>("mpv_wait_event", core, seconds);
}

void mpv_set_wakeup_callback(mpv_handle *core, void (*callback)(void *), void *data)
{
    forwarded<mpv_set_wakeup_callback>("mpv_set_wakeup_callback", core, callback, data);
}

int mpv_render_context_create(mpv_render_context **renderer, mpv_handle *core,
                              mpv_render_param *parameters)
{
    return forwarded<mpv_render_context_create>("mpv_render_context_create", renderer, core,
                                                parameters);
}

void mpv_render_context_set_update_callback(mpv_render_context *renderer,
                                            mpv_render_update_fn callback, void *data)
{
    forwarded<mpv_render_context_set_update_callback>("mpv_render_context_set_update_callback",
                                                      renderer, callback, data);
}

uint64_t mpv_render_context_update(mpv_render_context *renderer)
{
    return forwarded<mpv_render_context_update>("mpv_render_context_update", renderer);
}

int mpv_render_context_render(mpv_render_context *renderer, mpv_render_param *parameters)
{
    return forwarded<mpv_render_context_render>("mpv_render_context_render", renderer, parameters);
}

void mpv_render_context_free(mpv_render_context *renderer)
{
    forwarded<mpv_render_context_free>("mpv_render_context_free", renderer);
}

} // extern "C"
