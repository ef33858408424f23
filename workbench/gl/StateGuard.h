// SPDX-License-Identifier: Apache-2.0
// OpenGL state: keeping it, and the state that drawing starts from.
#pragma once

#include "host/Export.h"

#include <array>

namespace workbench {

/// Remembers all OpenGL state that drawing can change and puts it back, also when an exception passes. Guards
/// nest as deep as OpenGL's attribute stack; beyond that the constructor throws Failure(OpenGL).
class KROD_API StateGuard {
public:
    StateGuard();
    StateGuard(const StateGuard&) = delete;
    StateGuard& operator=(const StateGuard&) = delete;
    ~StateGuard();

private:
    static constexpr int TextureUnits = 2; // those that the host and its modules use
    static constexpr int Switches = 6;

    /// The top of one matrix stack and the height of the stack.
    struct Matrix {
        std::array<double, 16> values{};
        int height = 1;
    };

    /// What one texture unit has beside the attribute stack.
    struct TextureUnit {
        Matrix matrix;
        int multisampleTexture = 0;
        std::array<float, 4> coordinates{};
    };

    static Matrix saveMatrix(unsigned matrix, unsigned height);
    static void restoreMatrix(unsigned mode, unsigned height, const Matrix& saved);
    void save();
    void restoreMatrices() const;
    void restoreTextureUnits() const;

    int attributes = 0, clientAttributes = 0; // heights of the attribute stacks
    int program = 0, vertexArray = 0, arrayBuffer = 0, packBuffer = 0, unpackBuffer = 0;
    int drawFramebuffer = 0, readFramebuffer = 0, renderbuffer = 0;
    int sampleMask = 0;
    std::array<bool, Switches> switches{}; // those that the attribute stack leaves out
    int activeTexture = 0;
    // Mesa's attribute stack leaves out multisample textures, and current values where nothing is drawn
    // between nested pushes.
    std::array<float, 4> color{};
    std::array<float, 3> normal{};
    Matrix projection, modelView;
    std::array<TextureUnit, TextureUnits> textureUnits;
};

/// Sets OpenGL's own initial state in all that decides how something is drawn, with the viewport over width
/// times height pixels and the blend function of transparency (SRC_ALPHA, ONE_MINUS_SRC_ALPHA). Projection
/// and model-view matrices, and the framebuffer, stay.
void setDrawingState(int width, int height);

/// The state that every render operation starts from: the one above, with identity matrices.
void setEntryState(int width, int height);

/// Rows of pixels without gaps, to and from the memory of this process.
void resetPixelStore();

} // namespace workbench
