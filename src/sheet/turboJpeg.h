#pragma once

#include <QtEndian>

#include <turbojpeg.h>

#include <memory>

namespace vignar
{

struct TurboDeleter {
    void operator()(void *handle) const { tjDestroy(handle); }
};
/// A coder or decoder of the JPEG library.
using TurboHandle = std::unique_ptr<void, TurboDeleter>;

/// Native order of RGB32; the library fills the alpha byte with 255.
inline constexpr int nativePixels = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? TJPF_BGRA : TJPF_ARGB;

} // namespace vignar
