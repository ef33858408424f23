// SPDX-License-Identifier: Apache-2.0
// Objects that draw their input into a multisample target first.
#pragma once

#include "host/gl/DeferredRenderObject.h"

namespace krod {

/// A deferred object whose off-screen picture has several samples per pixel.
class KROD_API MSDeferredRenderObject : public DeferredRenderObject {
public:
    /// The multisample textures that a renderer reads: RGBA half colour and float depth.
    struct Scene {
        int colorUnit = 0;   ///< texture unit of the colour texture
        int depthUnit = 1;   ///< texture unit of the depth texture
        int sampleCount = 0; ///< the samples that the textures really hold
    };

    /// A renderer over a multisample target. It is made before the target, which the host attaches with the
    /// number of samples that the driver grants.
    class KROD_API MultiSampleDeferredRenderer : public DeferredRenderer {
    public:
        /// [host] Asks for a target of that many samples.
        MultiSampleDeferredRenderer(VGLRenderContext& context, int sampleCount);
        ~MultiSampleDeferredRenderer() override;

        /// [host] The samples that the renderer asked for.
        [[nodiscard]] int requestedSamples() const noexcept { return requested; }
        /// [host] Called by the host between the factory and render.
        void attach(const Scene& target) noexcept { attached = target; }
        [[nodiscard]] const Scene& scene() const noexcept { return attached; }

    private:
        int requested;
        Scene attached;
    };

    using DeferredRenderObject::DeferredRenderObject;
    ~MSDeferredRenderObject() override;
};

} // namespace krod
