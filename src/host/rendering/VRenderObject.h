// SPDX-License-Identifier: Apache-2.0
// Module objects that can be drawn.
#pragma once

#include "host/core/VObject.h"
#include "host/rendering/RenderAble.h"

#include <string>

namespace krod {

/// A module that can be drawn, and therefore be the input of a display.
class KROD_API VRenderObject : public VObject, public RenderAble {
public:
    /// [host · copies]
    explicit VRenderObject(const std::string& name);
    ~VRenderObject() override;
};

} // namespace krod
