// SPDX-License-Identifier: Apache-2.0
// Scene/Columns - shows rows of columns that recede over a chequered floor, warm ones in front.     (row 6)
//     much depth in little space: near and far columns, edges before a distant floor, repeated shapes
#include "workbench/objects/Kept.h"
#include "workbench/objects/MeshDrawing.h"

#include "host/gl/VGLRenderObject.h"
#include "plugin/Registration.h"

#include <glm/common.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace workbench::objects::Columns {
namespace {

using namespace krod;

constexpr int MostInRow = 64;
constexpr double Spacing = 1;
constexpr double BaseSide = 0.44, BaseHeight = 0.12, ShaftRadius = 0.17, ShaftHeight = 2.3;
constexpr int SidesOfShaft = 32;
constexpr double Tilt = 0.42, Turn = 0.62; // of the floor towards +z and about its own axis, radians
constexpr glm::vec4 Light(0.84F, 0.82F, 0.78F, 1), Dark(0.3F, 0.33F, 0.38F, 1); // of the floor
constexpr glm::vec4 Front(0.96F, 0.78F, 0.55F, 1), Back(0.42F, 0.6F, 0.86F, 1); // of the columns

struct Settings {
    int rows = 5;
    int columns = 5;
    friend bool operator==(const Settings&, const Settings&) = default;
};

/// Turns the floor, and then tilts it so that one looks down on it from +z.
glm::vec3 placed(const glm::dvec3& p) {
    const glm::dvec3 q(p.x * std::cos(Turn) + p.z * std::sin(Turn), p.y,
                       p.z * std::cos(Turn) - p.x * std::sin(Turn));
    return {q.x, q.y * std::cos(Tilt) - q.z * std::sin(Tilt), q.y * std::sin(Tilt) + q.z * std::cos(Tilt)};
}

std::uint32_t addVertex(Mesh& mesh, const glm::dvec3& place, const glm::dvec3& normal,
                        const glm::vec4& colour) {
    mesh.positions.push_back(placed(place));
    mesh.normals.push_back(placed(normal));
    mesh.colours.push_back(colour);
    return static_cast<std::uint32_t>(mesh.positions.size() - 1);
}

/// A parallelogram from a corner along two edges.
void addPatch(Mesh& mesh, const glm::dvec3& corner, const glm::dvec3& edge, const glm::dvec3& other,
              const glm::dvec3& normal, const glm::vec4& colour) {
    const std::uint32_t first = addVertex(mesh, corner, normal, colour);
    addVertex(mesh, corner + edge, normal, colour);
    addVertex(mesh, corner + edge + other, normal, colour);
    addVertex(mesh, corner + other, normal, colour);
    mesh.triangles.insert(mesh.triangles.end(), {first, first + 1, first + 2, first, first + 2, first + 3});
}

/// Sides and top of an upright box; nobody sees its bottom.
void addBox(Mesh& mesh, const glm::dvec3& low, const glm::dvec3& size, const glm::vec4& colour) {
    const glm::dvec3 x(size.x, 0, 0), y(0, size.y, 0), z(0, 0, size.z);
    addPatch(mesh, low, x, y, {0, 0, -1}, colour);
    addPatch(mesh, low + z, x, y, {0, 0, 1}, colour);
    addPatch(mesh, low, z, y, {-1, 0, 0}, colour);
    addPatch(mesh, low + x, z, y, {1, 0, 0}, colour);
    addPatch(mesh, low + y, x, z, {0, 1, 0}, colour);
}

void addShaft(Mesh& mesh, const glm::dvec3& foot, const glm::vec4& colour) {
    const auto first = static_cast<std::uint32_t>(mesh.positions.size());
    for (int side = 0; side < SidesOfShaft; ++side) {
        const double angle = 2 * std::numbers::pi * side / SidesOfShaft;
        const glm::dvec3 normal(std::cos(angle), 0, std::sin(angle));
        addVertex(mesh, foot + normal * ShaftRadius, normal, colour);
        addVertex(mesh, foot + normal * (0.85 * ShaftRadius) + glm::dvec3(0, ShaftHeight, 0), normal, colour);
    }
    for (std::uint32_t side = 0; side < SidesOfShaft; ++side) {
        const std::uint32_t a = first + 2 * side, b = first + 2 * ((side + 1) % SidesOfShaft);
        mesh.triangles.insert(mesh.triangles.end(), {a, b, b + 1, a, b + 1, a + 1});
    }
}

void addColumn(Mesh& mesh, double x, double z, const glm::vec4& colour) {
    const glm::dvec3 side(BaseSide, BaseHeight, BaseSide), corner(x - BaseSide / 2, 0, z - BaseSide / 2);
    addBox(mesh, corner, side, colour);
    addShaft(mesh, {x, BaseHeight, z}, colour);
    addBox(mesh, corner + glm::dvec3(0, BaseHeight + ShaftHeight, 0), side, colour);
}

MeshDrawing make(const Settings& wanted) {
    const int rows = std::clamp(wanted.rows, 1, MostInRow),
              columns = std::clamp(wanted.columns, 1, MostInRow);
    const double left = -Spacing * (columns - 1) / 2, back = -Spacing * (rows - 1) / 2;
    Mesh mesh;
    for (int row = 0; row < rows; ++row) {
        const glm::vec4 colour =
            glm::mix(Back, Front, static_cast<float>(row) / static_cast<float>(std::max(rows - 1, 1)));
        for (int column = 0; column < columns; ++column)
            addColumn(mesh, left + column * Spacing, back + row * Spacing, colour);
    }
    const double tile = Spacing / 2;
    for (int row = -1; row < 2 * rows; ++row)
        for (int column = -1; column < 2 * columns; ++column)
            addPatch(mesh, {left + (column - 0.5) * tile, 0, back + (row - 0.5) * tile}, {tile, 0, 0},
                     {0, 0, tile}, {0, 1, 0}, (row + column) % 2 == 0 ? Light : Dark);
    Model model;
    model.meshes.push_back(std::move(mesh));
    return MeshDrawing(std::move(model));
}

class ColumnsObject : public VGLRenderObject {
public:
    ColumnsObject(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : VGLRenderObject(name, 0, preferences) {
        for (auto* number : {&rows, &columns}) {
            number->setLimits({.min = 1, .max = MostInRow});
        }
    }

    void draw(VGLRenderContext& context) override { drawing(context.valuePool()).draw(); }
    [[nodiscard]] BoundingSphere bounds() const override { return drawing(VValuePool()).bounds(); }

private:
    const MeshDrawing& drawing(const VValuePool& pool) const {
        Settings settings;
        rows.read(pool, settings.rows);
        columns.read(pool, settings.columns);
        return kept.get(settings, make);
    }

    TypedSlot<int> rows{this, "rows", 5, 0};
    TypedSlot<int> columns{this, "columns", 5, 0};
    mutable Kept<Settings, MeshDrawing> kept;
};

KROD_ROW(6)
CreatorRegistration<ColumnsObject, void> creator(
    {.category = "Scene",
     .source = "Columns",
     .name = "Columns",
     .group = "Demo",
     .help = "<p>Rows of columns that recede over a chequered floor. For everything that looks at depth: "
             "many distances, and edges before a far ground.</p>"
             "<ul><li><b>rows</b>: rows from front to back, from 1 to 64.</li>"
             "<li><b>columns</b>: columns in each row, from 1 to 64.</li></ul>",
     .description = "Rows of columns that recede over a floor."},
    0);
KROD_ROW(6)
const SlotTypes<int> slotTypes;

} // namespace
} // namespace workbench::objects::Columns
