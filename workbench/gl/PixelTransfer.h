// SPDX-License-Identifier: Apache-2.0
// Pixels between pictures, whose top row comes first, and OpenGL, whose bottom row does.
#pragma once

#include "host/rendering/RGBAHalf.h"

#include <cstddef>

namespace workbench {

/// Fills the bound two-dimensional texture of that size: the first row lies at t = 1 afterwards. Sets the
/// pixel store.
void uploadPixels(int width, int height, const krod::RGBAHalf* topRow);

/// A rectangle of the current framebuffer; x and y are its lower left corner.
struct FrameRectangle {
    int x = 0, y = 0, width = 0, height = 0;
};

/// Reads a rectangle, top row first, into rows that lie `stride` pixels apart. Sets the pixel store.
void readPixels(const FrameRectangle& from, krod::RGBAHalf* topRow, std::size_t stride);

} // namespace workbench
