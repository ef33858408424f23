// SPDX-License-Identifier: Apache-2.0
#include "host/rendering/VRenderObject.h"

#include "host/rendering/VRenderContext.h"

namespace krod {

RenderAble::~RenderAble() = default;

VRenderContext::~VRenderContext() = default;

VRenderObject::VRenderObject(const std::string& name) : VObject(name) {}

VRenderObject::~VRenderObject() = default;

} // namespace krod
