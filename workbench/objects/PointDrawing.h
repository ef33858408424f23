// SPDX-License-Identifier: Apache-2.0
// Drawing points that add up.
#pragma once

#include "workbench/files/FileContent.h"
#include "workbench/files/Points.h"

#include "host/rendering/BoundingSphere.h"

namespace workbench::objects {

/// Points whose light adds up, far above 1 where there are many, in coordinates that begin at the set's origin. It owns memory only, nothing of OpenGL, so
/// it may live and die without a context and be drawn in several.
class PointDrawing {
public:
    explicit PointDrawing(PointSet points);

    /// Draws into the current frame, `size` pixels wide each, colours times `intensity`. Behind what was drawn
    /// before nothing is added; points do not hide each other, the depth becomes that of the nearest. A
    /// context is current; throws what krod::GLProgram throws.
    void draw(double size, double intensity) const;

    /// Without notes.
    [[nodiscard]] ContentFacts facts() const;
    /// Around all points.
    [[nodiscard]] const krod::BoundingSphere& bounds() const noexcept { return sphere; }

private:
    PointSet set;
    krod::BoundingSphere sphere;
};

} // namespace workbench::objects
