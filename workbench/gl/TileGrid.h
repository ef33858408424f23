// SPDX-License-Identifier: Apache-2.0
// Cutting large pictures into tiles.
#pragma once

#include "host/Export.h"

#include <vector>

namespace workbench {

/// The largest tile, and the pixels around each that are drawn, too, for whatever looks at its neighbours.
struct TileWish {
    int size = 2048;
    int overlap = 64;
    int multiple = 1; ///< tiles begin at multiples of it
};

/// A part of a picture, in pixels from the top left corner: what is drawn, and what of it is kept.
struct PictureTile {
    int x = 0, y = 0, width = 0, height = 0;      ///< kept
    int left = 0, top = 0, right = 0, bottom = 0; ///< drawn around it; never beyond the picture
    [[nodiscard]] int drawnWidth() const noexcept { return left + width + right; }
    [[nodiscard]] int drawnHeight() const noexcept { return top + height + bottom; }
};

/// Tiles that keep nearly as many pixels each, row by row from the top, none drawn larger than wished. All are
/// drawn in the same size, so that one drawing area does for them: what is drawn lies further inside at the
/// edges of the picture. A side that fits is not cut. Throws Failure(Usage) for a picture without pixels, a negative overlap, and an overlap that
/// leaves nothing of a tile, or less than the multiple.
[[nodiscard]] KROD_API std::vector<PictureTile> planTiles(int width, int height, const TileWish& wish);

} // namespace workbench
