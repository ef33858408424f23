// SPDX-License-Identifier: Apache-2.0
// From a renderable object to the pixels of a picture.
#pragma once

#include "workbench/gl/Camera.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/gl/TileGrid.h"

#include "host/core/VValuePool.h"
#include "host/rendering/RGBAHalf.h"
#include "host/rendering/RenderAble.h"

#include <array>
#include <vector>

namespace workbench {

/// What a picture is to be.
struct FrameSetup {
    int width = 1280;
    int height = 720;
    Camera camera = {};
    std::array<float, 4> background{0, 0, 0, 1}; ///< linear RGBA
    TileWish tiles = {};
};

/// Draws the object, with its parameters read in the pool, and gives the picture's pixels, top row first.
/// Pictures beyond the tile size are drawn in tiles and stitched. OpenGL is left as it was. Throws Failure,
/// krod::GLError, and what the object throws.
[[nodiscard]] KROD_API std::vector<krod::RGBAHalf> renderPicture(RenderSession& session,
                                                                 krod::RenderAble& object,
                                                                 const krod::VValuePool& pool,
                                                                 const FrameSetup& setup);

/// Draws one tile of the picture; the pixels are those that are kept of it.
[[nodiscard]] KROD_API std::vector<krod::RGBAHalf>
renderTile(RenderSession& session, krod::RenderAble& object, const krod::VValuePool& pool,
           const FrameSetup& setup, const PictureTile& tile);

} // namespace workbench
