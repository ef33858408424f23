// SPDX-License-Identifier: Apache-2.0
#include "host/gl/VGLRenderObject.h"

#include <stdexcept>

namespace krod {

VGLRenderContext::~VGLRenderContext() = default;

VGLRenderObject::VGLRenderObject(const std::string& name, int,
                                 const StrongPtr<VCreationPreferences>& preferences)
    : VRenderObject(name), wishes(preferences) {}
VGLRenderObject::~VGLRenderObject() = default;

void VGLRenderObject::render(VRenderContext& context) {
    auto* frame = dynamic_cast<VGLRenderContext*>(&context);
    if (!frame)
        throw std::invalid_argument(name() + ": draws with OpenGL only, and the context is of another kind");
    draw(*frame);
}

} // namespace krod
