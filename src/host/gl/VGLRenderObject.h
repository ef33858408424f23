// SPDX-License-Identifier: Apache-2.0
// Module objects that draw with OpenGL.
#pragma once

#include "host/core/VCreationPreferences.h"
#include "host/gl/VGLRenderContext.h"
#include "host/rendering/VRenderObject.h"

#include <string>

namespace krod {

/// A module that draws with OpenGL. When it is drawn, projection and model-view matrices, viewport and
/// destination are set, no program is in use, and no error is pending; the host restores all state
/// afterwards.
class KROD_API VGLRenderObject : public VRenderObject {
public:
    /// [host · copies] `flags` is 0; the preferences are the creator's.
    VGLRenderObject(const std::string& name, int flags, const StrongPtr<VCreationPreferences>& preferences);
    ~VGLRenderObject() override;

    /// [host, gl · borrows] Calls draw. Throws std::invalid_argument for a context that is not
    /// VGLRenderContext.
    void render(VRenderContext& context) final;
    /// [host, gl · borrows] Draws the object. Throws GLError, and what the object's own work throws.
    virtual void draw(VGLRenderContext& context) = 0;

private:
    StrongPtr<VCreationPreferences> wishes;
};

} // namespace krod
