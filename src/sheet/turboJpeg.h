#pragma once

#include <turbojpeg.h>

#include <memory>

namespace vignar
{

struct TurboDeleter {
    void operator()(void *handle) const { tjDestroy(handle); }
};
/// A coder or decoder of the JPEG library.
using TurboHandle = std::unique_ptr<void, TurboDeleter>;

} // namespace vignar
