// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/PixelTransfer.h"

#include "workbench/gl/StateGuard.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <vector>

namespace workbench {
namespace {

/// Rows are turned over in strips of this height, so that no second picture is needed for it.
constexpr int StripRows = 64;

std::size_t size(int count) { return static_cast<std::size_t>(count); }

} // namespace

void uploadPixels(int width, int height, const krod::RGBAHalf* topRow) {
    resetPixelStore();
    std::vector<krod::RGBAHalf> strip(size(width) * size(std::min(StripRows, height)));
    for (int y = 0; y < height; y += StripRows) { // from the bottom
        const int rows = std::min(StripRows, height - y);
        for (int row = 0; row < rows; ++row)
            std::copy_n(topRow + size(height - 1 - y - row) * size(width), width,
                        strip.data() + size(row) * size(width));
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, y, width, rows, GL_RGBA, GL_HALF_FLOAT, strip.data());
    }
}

void readPixels(const FrameRectangle& from, krod::RGBAHalf* topRow, std::size_t stride) {
    resetPixelStore();
    std::vector<krod::RGBAHalf> strip(size(from.width) * size(std::min(StripRows, from.height)));
    for (int y = 0; y < from.height; y += StripRows) {
        const int rows = std::min(StripRows, from.height - y);
        glReadPixels(from.x, from.y + y, from.width, rows, GL_RGBA, GL_HALF_FLOAT, strip.data());
        for (int row = 0; row < rows; ++row)
            std::copy_n(strip.data() + size(row) * size(from.width), from.width,
                        topRow + size(from.height - 1 - y - row) * stride);
    }
}

} // namespace workbench
