// SPDX-License-Identifier: Apache-2.0
// Tile processors that run a fragment shader.
#pragma once

#include "host/gl/GLTexture2D.h"
#include "host/rendering/ImageTileProcessor.h"

#include <string>

namespace krod {

/// Runs the fragment shader that shaderCode() returns over every half-precision RGBA tile: the tile is bound
/// as the texture "frame", its coordinates are gl_TexCoord[0].xy with the top row at t = 1, and what the
/// shader writes takes the place of the pixels. Virtual slots continue those of ImageTileProcessor in the
/// order of declaration.
class KROD_API GLImageTileProcessor : public ImageTileProcessor {
public:
    GLImageTileProcessor() = default;
    ~GLImageTileProcessor() override;
    /// [host, gl · borrows] Uploads, draws, reads back. Throws when the shader does not compile; the tile is
    /// unchanged then.
    void process(const VRenderContext& context, ImageTile& tile) override;
    /// [host, gl · shares] The texture that a tile of that size is uploaded to; the host keeps it for the
    /// next one, also of another processor.
    virtual StrongPtr<GLTexture2D> createFrameTexture(int width, int height);
    /// [host, gl · borrows] Draws one quad with the texture through the shader into the current framebuffer.
    /// A host that goes on running may have the last good program draw in place of one that does not compile.
    virtual void renderFrameTexture(GLTexture2D& frame);
    /// [host · gives] The fragment shader text.
    [[nodiscard]] virtual std::string shaderCode() const = 0;

private:
    void drawOver(const ImageTile& tile, RGBAHalf* pixels);
    std::string programText();

    std::string lastGood, lastRefused; // texts; only where the host keeps the last good program
};

} // namespace krod
