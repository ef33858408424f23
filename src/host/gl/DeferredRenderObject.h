// SPDX-License-Identifier: Apache-2.0
// Objects that draw their input off-screen first.
#pragma once

#include "host/gl/VGLRenderObject.h"

namespace krod {

/// An object whose picture is made by a renderer from an off-screen picture.
class KROD_API DeferredRenderObject : public VGLRenderObject {
public:
    /// Puts the off-screen picture onto the frame. Virtual slots in order: a first operation that does
    /// nothing, the two destructors, render.
    class KROD_API DeferredRenderer : public ReferenceBase {
    public:
        /// [host] Made by a factory, once per frame.
        explicit DeferredRenderer(VGLRenderContext& context);
        ~DeferredRenderer() override;
        /// [host, gl] Draws onto the current frame. Throws GLError and what GLProgram throws.
        virtual void render() = 0;
        /// [host, gl] Draws one quad over the viewport at that depth (1 is the far plane), with texture
        /// coordinates from (0,0) at the lower left to (1,1).
        void glRenderFullScreen(double depth);
    };

    using VGLRenderObject::VGLRenderObject;
    ~DeferredRenderObject() override;
};

} // namespace krod
