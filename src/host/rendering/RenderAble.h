// SPDX-License-Identifier: Apache-2.0
// Things that can be drawn.
#pragma once

#include "host/Export.h"
#include "host/rendering/BoundingSphere.h"

namespace krod {

class VRenderContext;

/// Something that draws itself into the current frame.
class KROD_API RenderAble {
public:
    virtual ~RenderAble();
    /// [host, gl · borrows] Draws. Throws GLError, and what the object's own work throws.
    virtual void render(VRenderContext& context) = 0;
    /// [host] Where it draws, so that a camera can be fitted.
    [[nodiscard]] virtual BoundingSphere bounds() const = 0;
};

} // namespace krod
