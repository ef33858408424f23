// SPDX-License-Identifier: Apache-2.0
// Drawing lit triangles.
#pragma once

#include "workbench/files/FileContent.h"
#include "workbench/files/Model.h"

#include "host/rendering/BoundingSphere.h"

#include <vector>

namespace workbench::objects {

/// Triangles under a light that shines from the eye and sees both sides alike. It owns memory only, nothing
/// of OpenGL, so it may live and die without a context and be drawn in several.
class MeshDrawing {
public:
    /// Colours of vertices are multiplied with that of their material.
    explicit MeshDrawing(Model model);

    /// Draws into the current frame: colour times the cosine between normal and line of sight, alpha as it
    /// is, with depth. Normals of length 0 are replaced by those of the triangles. A context is current;
    /// throws what krod::GLProgram throws.
    void draw() const;

    /// Without notes.
    [[nodiscard]] ContentFacts facts() const;
    /// Around all vertices.
    [[nodiscard]] const krod::BoundingSphere& bounds() const noexcept { return sphere; }

private:
    std::vector<Mesh> meshes;
    krod::BoundingSphere sphere;
};

} // namespace workbench::objects
