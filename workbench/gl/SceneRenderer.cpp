// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/SceneRenderer.h"

#include "workbench/gl/DrawingWatch.h"
#include "workbench/gl/PendingErrors.h"
#include "workbench/gl/PixelTransfer.h"
#include "workbench/gl/RenderTarget.h"
#include "workbench/gl/StateGuard.h"

#include "host/gl/GLError.h"
#include "host/gl/VGLRenderContext.h"

#include <epoxy/gl.h>
#include <glm/gtc/type_ptr.hpp>

#include <algorithm>
#include <cstddef>

namespace workbench {
namespace {

constexpr char Who[] = "picture";

std::size_t pixelCount(int width, int height) {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

/// Takes normalised device coordinates of the whole picture to those of the tile: the tile's rectangle is
/// stretched to -1 … 1. Rows count from the top in pictures and from the bottom in OpenGL.
glm::dmat4 tileMatrix(const FrameSetup& setup, const PictureTile& tile) {
    const double width = tile.drawnWidth(), height = tile.drawnHeight();
    const double left = tile.x - tile.left;
    const double bottom = setup.height - (tile.y - tile.top) - height;
    glm::dmat4 matrix(1);
    matrix[0][0] = setup.width / width;
    matrix[1][1] = setup.height / height;
    matrix[3][0] = (setup.width - 2 * left) / width - 1;
    matrix[3][1] = (setup.height - 2 * bottom) / height - 1;
    return matrix;
}

void loadCamera(const FrameSetup& setup, const PictureTile& tile) {
    const double aspect = static_cast<double>(setup.width) / setup.height;
    const glm::dmat4 projection = tileMatrix(setup, tile) * setup.camera.projection(aspect);
    const glm::dmat4 view = setup.camera.view();
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixd(glm::value_ptr(projection));
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixd(glm::value_ptr(view));
}

} // namespace

std::vector<krod::RGBAHalf> renderTile(RenderSession& session, krod::RenderAble& object,
                                       const krod::VValuePool& pool, const FrameSetup& setup,
                                       const PictureTile& tile) {
    session.makeCurrent();
    reportPendingErrors(Who, "was pending before it was drawn; something else caused it");
    const auto destination = session.targets().lease(tile.drawnWidth(), tile.drawnHeight(), true);
    const StateGuard guard;
    destination->bind();
    setDrawingState(tile.drawnWidth(), tile.drawnHeight());
    const auto& color = setup.background;
    RenderTarget::clear({color[0], color[1], color[2], color[3]});
    loadCamera(setup, tile);

    const DrawingWatch watch(pixelCount(tile.drawnWidth(), tile.drawnHeight()));
    krod::VGLRenderContext context(pool, tile.drawnWidth(), tile.drawnHeight());
    object.render(context);
    krod::GLError::throwPossibleError(Who, "SceneRenderer", 0);

    std::vector<krod::RGBAHalf> pixels(pixelCount(tile.width, tile.height));
    destination->bind();
    readPixels({tile.left, tile.bottom, tile.width, tile.height}, pixels.data(),
               static_cast<std::size_t>(tile.width));
    krod::GLError::throwPossibleError(Who, "SceneRenderer", 0);
    return pixels;
}

std::vector<krod::RGBAHalf> renderPicture(RenderSession& session, krod::RenderAble& object,
                                          const krod::VValuePool& pool, const FrameSetup& setup) {
    const std::vector<PictureTile> tiles = planTiles(setup.width, setup.height, setup.tiles);
    if (tiles.size() == 1) return renderTile(session, object, pool, setup, tiles.front());
    std::vector<krod::RGBAHalf> picture(pixelCount(setup.width, setup.height));
    for (const PictureTile& tile : tiles) {
        const std::vector<krod::RGBAHalf> pixels = renderTile(session, object, pool, setup, tile);
        for (int row = 0; row < tile.height; ++row)
            std::copy_n(pixels.data() + pixelCount(tile.width, row), tile.width,
                        picture.data() + pixelCount(setup.width, tile.y + row) + tile.x);
    }
    return picture;
}

} // namespace workbench
