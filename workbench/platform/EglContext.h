// SPDX-License-Identifier: Apache-2.0
// OpenGL without a window: a context in which modules can draw, checked to be one that they can use.
#pragma once

#include "workbench/platform/GpuChoice.h"

#include <memory>
#include <string>
#include <vector>

namespace workbench {

struct EglDevice;

/// One line of the list of devices.
struct GpuDevice {
    int index = 0;        ///< for --gpu
    std::string vendor;   ///< as OpenGL names it; empty if no context can be made
    std::string renderer; ///< as OpenGL names it; EGL's own label if no context can be made
    bool software = false;
    std::string problem; ///< the sentence why it cannot be used; empty if it can
};

/// Every device that EGL offers. Makes a context on each for a moment; the context that is current on this
/// thread stays current. Throws Failure(OpenGL) if there is no EGL.
[[nodiscard]] std::vector<GpuDevice> listDevices();

/// What the context's OpenGL says about itself.
struct ContextProperties {
    std::string vendor;
    std::string renderer;
    std::string version;     ///< the whole text, for example "4.5 (Compatibility Profile) Mesa 22.3.6"
    std::string glslVersion; ///< the whole text
    int major = 0;
    int minor = 0;
    int maxSamples = 1;        ///< per pixel, for colour and depth textures alike
    int maxTextureSize = 0;    ///< pixels on a side
    bool compatibility = true; ///< the old functions are there too
    bool software = false;     ///< draws on the processor
    bool debug = false;        ///< GL_KHR_debug
};

enum class ContextProfile {
    Compatibility, ///< what modules need: they use both the old and the new functions
    Core,          ///< is asked for by tests only, and always refused
};

struct ContextRequest {
    GpuChoice gpu = {};
    ContextProfile profile = ContextProfile::Compatibility;
};

/// Owns an OpenGL context without a surface. It belongs to one thread at a time.
class EglContext {
public:
    /// Makes a context of OpenGL 3.2 or newer with the compatibility profile and makes it current on this
    /// thread. With GpuChoice::Kind::Automatic hardware is tried first, then software, then whatever Mesa's
    /// surfaceless platform gives. Throws Failure(OpenGL) with what was wanted, what there is, and every
    /// device tried as details.
    [[nodiscard]] static EglContext create(const ContextRequest& request);
    [[nodiscard]] static EglContext create(const GpuChoice& gpu) { return create(ContextRequest{gpu}); }

    /// Makes the context current on the calling thread. Throws Failure(OpenGL).
    void makeCurrent() const;

    /// Whether it is current on the calling thread.
    [[nodiscard]] bool isCurrent() const;

    [[nodiscard]] const ContextProperties& properties() const noexcept;

    EglContext(EglContext&& other) noexcept;
    EglContext& operator=(EglContext&& other) noexcept;
    ~EglContext();

private:
    friend std::vector<GpuDevice> listDevices();
    struct State;

    EglContext(const EglDevice& device, ContextProfile profile);

    std::unique_ptr<State> state;
};

} // namespace workbench
