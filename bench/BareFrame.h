// SPDX-License-Identifier: Apache-2.0
// The frame of a display in bare OpenGL.
#pragma once

#include "Displays.h"

#include "workbench/gl/ProgramCache.h"

#include "host/gl/MSDeferredObjectDisplay.h"

#include <glm/mat4x4.hpp>

#include <memory>

namespace bench {

/// A framebuffer of half RGBA colour and float depth; 0 samples: ordinary textures. Throws std::runtime_error when
/// the driver refuses it.
class Target {
public:
    Target(int width, int height, int samples);
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;
    ~Target();

private:
    [[nodiscard]] unsigned attach(unsigned place, unsigned format, int width, int height, int samples) const;

    unsigned kind;

public:
    unsigned framebuffer = 0, color = 0, depth = 0;
};

/// The destination that both frames are drawn into, and the camera, which sees the whole of an object.
class Destination {
public:
    Destination(int width, int height, const krod::BoundingSphere& bounds);

    /// Binds and clears it, and loads the camera.
    void begin() const;

    int width, height;
    Target target;

private:
    glm::dmat4 projection{1}, view{1};
};

/// One frame of a display without the host: clear, the same object drawn into a multisample target, one quad through
/// the same program, finish. Textures, framebuffers and the linked program are there beforehand, and the program's
/// uniforms keep what the display has set in it; so the display has to be drawn once before.
class BareFrame {
public:
    /// The programs that the display makes are looked up in the cache. The scene and the destination outlive this.
    BareFrame(const DisplayCase& about, krod::MSDeferredObjectDisplay& display, krod::VGLRenderObject& scene,
              const Destination& destination, const krod::VValuePool& pool);

    void draw() {
        drawScene();
        drawQuad(program->name.get());
    }

    /// The first half of a frame: the object into the multisample target.
    void drawScene();
    /// The second half: the quad through a program; finishes.
    void drawQuad(unsigned name);
    /// Tells a program how many samples there are, whatever there are.
    static void setSamples(unsigned name, int samples);
    /// The display's own program.
    [[nodiscard]] unsigned programName() const { return program->name.get(); }

private:
    const DisplayCase& about;
    krod::VGLRenderObject& scene;
    const Destination& destination;
    krod::VGLRenderContext context;
    Target target;
    std::shared_ptr<workbench::CompiledProgram> program;
};

} // namespace bench
