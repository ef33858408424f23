// SPDX-License-Identifier: Apache-2.0
// The context of one frame.
#pragma once

#include "host/rendering/VRenderContext.h"

namespace krod {

/// A frame being drawn with OpenGL.
class KROD_API VGLRenderContext : public VRenderContext {
public:
    /// [host · borrows] A frame of width times height pixels.
    VGLRenderContext(const VValuePool& pool, int width, int height) noexcept
        : VRenderContext(pool), columns(width), rows(height) {}
    ~VGLRenderContext() override;

    /// [host] Size of the frame in pixels.
    [[nodiscard]] int width() const noexcept { return columns; }
    [[nodiscard]] int height() const noexcept { return rows; }

private:
    int columns;
    int rows;
};

} // namespace krod
