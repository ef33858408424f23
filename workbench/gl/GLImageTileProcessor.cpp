// SPDX-License-Identifier: Apache-2.0
#include "host/gl/GLImageTileProcessor.h"

#include "workbench/gl/PendingErrors.h"
#include "workbench/gl/PixelTransfer.h"
#include "workbench/gl/Quad.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/gl/RenderTarget.h"
#include "workbench/gl/ShaderGuard.h"
#include "workbench/gl/StateGuard.h"
#include "workbench/report/Failure.h"

#include "host/core/VActionNotifier.h"
#include "host/gl/GLError.h"
#include "host/gl/GLProgram.h"

#include <epoxy/gl.h>

#include <utility>

namespace krod {
namespace {

constexpr char VertexText[] =
    "void main(void)\n{\n\tgl_TexCoord[0] = gl_MultiTexCoord0;\n\tgl_Position = ftransform();\n}";
constexpr char FragmentLabel[] = "* Tile Fragment Shader *";
constexpr char Who[] = "image tile";

/// The pixels of a tile that shaders can process: half RGBA, as many as the tile's size asks for.
Chunk<RGBAHalf>* pixelsOf(const ImageTile& tile) {
    auto* pixels = dynamic_cast<Chunk<RGBAHalf>*>(tile.store().get());
    if (!pixels || tile.width() < 1 || tile.height() < 1) return nullptr;
    const std::size_t needed =
        static_cast<std::size_t>(tile.width()) * static_cast<std::size_t>(tile.height());
    return pixels->elements() < needed ? nullptr : pixels;
}

std::string describe(const ImageTile& tile) {
    return std::string(Who) + " of " + std::to_string(tile.width()) + 'x' + std::to_string(tile.height());
}

} // namespace

GLImageTileProcessor::~GLImageTileProcessor() = default;

void GLImageTileProcessor::process(const VRenderContext&, ImageTile& tile) {
    const auto pixels = pixelsOf(tile);
    if (!pixels) return;
    try {
        drawOver(tile, pixels->data());
    } catch (const GLError& error) { // missing memory has a way on, whoever notices it
        if (!workbench::isMemoryError(error.code())) throw;
        throw workbench::GraphicsMemoryFailure(describe(tile), 0);
    }
}

void GLImageTileProcessor::drawOver(const ImageTile& tile, RGBAHalf* pixels) {
    auto& session = workbench::RenderSession::require(Who);
    workbench::reportPendingErrors(Who, "was pending before it was processed; something else caused it");
    // The target also checks the size against the driver's limits, before the texture of the same size is
    // made.
    const auto target = session.targets().lease(tile.width(), tile.height(), false);
    const workbench::StateGuard guard;
    const StrongPtr<GLTexture2D> frame = createFrameTexture(tile.width(), tile.height());
    workbench::setEntryState(tile.width(), tile.height());
    glDisable(GL_DITHER);
    glBindTexture(GL_TEXTURE_2D, frame->name());
    workbench::uploadPixels(tile.width(), tile.height(), pixels);
    target->bind();
    constexpr float Nothing[4] = {};
    glClearBufferfv(GL_COLOR, 0, Nothing); // a program need not write a pixel
    renderFrameTexture(*frame);
    GLError::throwPossibleError(Who, "GLImageTileProcessor", 0);
    workbench::readPixels({0, 0, tile.width(), tile.height()}, pixels,
                          static_cast<std::size_t>(tile.width()));
    GLError::throwPossibleError(Who, "GLImageTileProcessor", 0);
}

StrongPtr<GLTexture2D> GLImageTileProcessor::createFrameTexture(int width, int height) {
    return workbench::RenderSession::require(Who).tileTexture(width, height);
}

/// The text to draw with: what shaderCode() returns, unless it does not compile and the session wants the
/// last good one then.
std::string GLImageTileProcessor::programText() {
    std::string text = shaderCode();
    const auto* const session = workbench::RenderSession::current();
    if (!session || !session->options().keepLastGoodProgram) return text;
    try {
        const GLProgram program(VertexText, text, workbench::TileVertexLabel, FragmentLabel);
        lastGood = text;
        lastRefused.clear();
    } catch (const workbench::Failure& failure) {
        if (failure.fault() != workbench::Fault::Shader || lastGood.empty()) throw;
        if (text != lastRefused) VActionNotifier::Warning(failure.what());
        lastRefused = std::exchange(text, lastGood);
    }
    return text;
}

void GLImageTileProcessor::renderFrameTexture(GLTexture2D& frame) {
    GLProgram program(VertexText, programText(), workbench::TileVertexLabel, FragmentLabel);
    program.use();
    program.setUniformValuei("frame", 0, program.reportsMissingUniforms());
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, frame.name());
    workbench::drawFullScreenQuad(0);
}

} // namespace krod
