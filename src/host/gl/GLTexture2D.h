// SPDX-License-Identifier: Apache-2.0
// A two-dimensional texture.
#pragma once

#include "host/memory/ReferenceBase.h"

#include <cstdint>

namespace krod {

/// Half-precision RGBA texture, nearest filtering, clamped to its edge, without mipmaps.
class KROD_API GLTexture2D : public ReferenceBase {
public:
    /// [host, gl] Storage of that size in pixels, contents undefined. Throws GLError.
    GLTexture2D(int width, int height);
    /// [host] Harmless after the end of the texture's context.
    ~GLTexture2D() override;

    /// [host] Size in pixels.
    [[nodiscard]] int width() const noexcept { return columns; }
    [[nodiscard]] int height() const noexcept { return rows; }
    /// [host] The OpenGL name.
    [[nodiscard]] unsigned name() const noexcept { return texture; }
    /// [host] Whether it belongs to the context that is current on this thread.
    [[nodiscard]] bool usable() const noexcept;

private:
    int columns;
    int rows;
    unsigned texture = 0;
    std::uint64_t owner = 0; // the host's number of the context
};

} // namespace krod
