// SPDX-License-Identifier: Apache-2.0
// What the eight displays share: steps to call, in the order in which they stand here. No base class with
// hooks: each display's render operation is a list of these steps, and its departures are their arguments.
#pragma once

#include "host/core/TypedSlot.h"
#include "host/gl/GLProgram.h"
#include "host/gl/MSDeferredObjectDisplay.h"
#include "host/values/FlagList.h"

#include <string>

namespace plime::display {

using krod::FlagList;
using krod::GLProgram;
using krod::MSDeferredObjectDisplay;

/// A shader body and the name of the file that may replace it; no name: nothing may.
struct Body {
    const char* overrideFile;
    const char* text;
};

/// The sample count that an unreadable "samples" stands for.
inline constexpr int FallbackSamples = 8;

/// Whether a list of flags that is read in a pool has that one, and has it on. An unreadable list has none.
[[nodiscard]] bool flagIsOn(const krod::TypedSlot<FlagList>& flags, const krod::VValuePool& pool,
                            const std::string& name);

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
    /// [host, gl] Sets a uniform of the module's own, in single precision.
    void bindValue(const std::string& name, double value);

private:
    GLProgram program;
};

/// What becomes of the depth test before the quad.
enum class DepthTest {
    OnAndOff, ///< switched on and straight back off
    On,       ///< switched on and left so
};

/// What becomes of the depth mask before the quad.
enum class DepthMask {
    Off,      ///< the quad writes no depth
    OffAndOn, ///< switched off and straight back on
};

/// What becomes of blending before the quad.
enum class Blend {
    Over,       ///< on, SRC_ALPHA and ONE_MINUS_SRC_ALPHA
    Glow,       ///< on, SRC_ALPHA and ONE: adds
    AsItStands, ///< on, with the function that is current
    OnAndOff,   ///< switched on and straight back off, no function set
};

/// The function of a display that honours the flag "glow".
[[nodiscard]] constexpr Blend blendOf(bool glow) { return glow ? Blend::Glow : Blend::Over; }

/// [host, gl] Sets the OpenGL state of the quad, call by call in the required order.
void quadState(DepthTest depthTest, DepthMask depthMask, Blend blend);

/// [host, gl] Switches the depth mask off and straight back on.
void depthMaskOffAndOn();

/// Where an OpenGL error is reported from: the unit's name and a line that stays as it is when the file
/// changes.
struct Label {
    const char* sourceFile;
    int line;
};

/// [host, gl] Raises a pending OpenGL error as "<file>(<line>): Render QUAD". Throws GLError.
void checkQuad(const Label& label);

} // namespace plime::display
