// SPDX-License-Identifier: Apache-2.0
// What the eight displays share: steps to call, in the order in which they stand here. No base class with
// hooks: each display's render operation is a list of these steps, and its departures are their arguments.
#pragma once

#include "host/gl/GLProgram.h"
#include "host/gl/MSDeferredObjectDisplay.h"

#include <string>

namespace plime::display {

using krod::GLProgram;
using krod::MSDeferredObjectDisplay;

/// A shader body and the name of the file that may replace it; no name: nothing may.
struct Body {
    const char* overrideFile;
    const char* text;
};

/// The sample count that an unreadable "samples" stands for.
inline constexpr int FallbackSamples = 8;

/// [host · gives] The text handed to the driver: "#version 150\n", the prefix, then the body or the file in
/// its place.
[[nodiscard]] std::string fragmentText(const std::string& prefix, const Body& body);

/// [host, gl · gives] A new program of the internal vertex shader and the fragment text, in use. One is made
/// in every draw and released at its end; nothing of it is kept. Throws what GLProgram throws.
class SceneProgram {
public:
    SceneProgram(const std::string& prefix, const Body& body);

    /// [host, gl] Sets "SceneColor" and "SceneDepth".
    void bindTextures(const krod::MSDeferredRenderObject::Scene& scene);
    /// [host, gl] Sets "nSamples", the samples that the textures really hold.
    void bindSampleCount(const krod::MSDeferredRenderObject::Scene& scene);

private:
    GLProgram program;
};

/// What becomes of the depth mask before the quad.
enum class DepthMask {
    Off,      ///< the quad writes no depth
    OffAndOn, ///< switched off and straight back on
};

/// The blend function of the quad.
enum class Blend {
    Over, ///< SRC_ALPHA, ONE_MINUS_SRC_ALPHA
    Glow, ///< SRC_ALPHA, ONE: adds
};

/// [host, gl] Sets the OpenGL state of the quad, call by call in the required order.
void quadState(DepthMask depthMask, Blend blend);

/// Where an OpenGL error is reported from: the unit's name and a line that stays as it is when the file
/// changes.
struct Label {
    const char* sourceFile;
    int line;
};

/// [host, gl] Raises a pending OpenGL error as "<file>(<line>): Render QUAD". Throws GLError.
void checkQuad(const Label& label);

} // namespace plime::display
