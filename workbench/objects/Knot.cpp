// SPDX-License-Identifier: Apache-2.0
// Scene/Knot - shows a knot that winds around a torus, smooth and in all colours.     (row 5)
//     middle line (R + r cos(q t)) (cos(p t), sin(p t), 0) + r sin(q t) z, 0 <= t < 2 pi, with a round tube
//     around it
#include "workbench/objects/Kept.h"
#include "workbench/objects/MeshDrawing.h"

#include "host/gl/VGLRenderObject.h"
#include "plugin/Registration.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace workbench::objects::Knot {
namespace {

using namespace krod;

constexpr double Large = 1.0, Small = 0.45; // R and r
constexpr int MostTurns = 24;
constexpr double Thinnest = 0.01, Thickest = 1;
constexpr int SidesOfTube = 48, RingsPerTurn = 240;

struct Settings {
    int p = 2;
    int q = 3;
    double thickness = 0.24;
    friend bool operator==(const Settings&, const Settings&) = default;
};

/// All hues, closing upon themselves: a cosine for each of red, green and blue, a third of a turn apart.
glm::vec4 hue(double share) {
    const auto wave = [share](double shift) {
        return static_cast<float>(0.55 + 0.42 * std::cos(2 * std::numbers::pi * (share - shift)));
    };
    return {wave(0), wave(1.0 / 3), wave(2.0 / 3), 1.0F};
}

/// A place on the middle line with the two directions across it. The line lies in the torus, so that the
/// normal of the torus is one of them everywhere, and the tube closes without a twist.
struct Frame {
    glm::dvec3 place, outward, aside;
};

Frame frameAt(const Settings& knot, double t) {
    const double around = knot.p * t, along = knot.q * t;
    const glm::dvec3 ray(std::cos(around), std::sin(around), 0), sweep(-ray.y, ray.x, 0), axis(0, 0, 1);
    const double reach = Large + Small * std::cos(along);
    const glm::dvec3 outward = ray * std::cos(along) + axis * std::sin(along);
    const glm::dvec3 rise = axis * std::cos(along) - ray * std::sin(along);
    const glm::dvec3 tangent = glm::normalize(sweep * (reach * knot.p) + rise * (Small * knot.q));
    return {ray * reach + axis * (Small * std::sin(along)), outward, glm::cross(tangent, outward)};
}

void addRing(Mesh& mesh, const Frame& frame, double thickness, const glm::vec4& colour) {
    for (int side = 0; side < SidesOfTube; ++side) {
        const double angle = 2 * std::numbers::pi * side / SidesOfTube;
        const glm::dvec3 normal = frame.outward * std::cos(angle) + frame.aside * std::sin(angle);
        mesh.positions.emplace_back(frame.place + normal * thickness);
        mesh.normals.emplace_back(normal);
        mesh.colours.push_back(colour);
    }
}

/// Joins each ring to the next one, the last to the first.
void addTriangles(Mesh& mesh, int rings) {
    const auto vertex = [rings](int ring, int side) {
        return static_cast<std::uint32_t>(ring % rings * SidesOfTube + side % SidesOfTube);
    };
    for (int ring = 0; ring < rings; ++ring)
        for (int side = 0; side < SidesOfTube; ++side) {
            const std::uint32_t a = vertex(ring, side), b = vertex(ring + 1, side);
            const std::uint32_t c = vertex(ring + 1, side + 1), d = vertex(ring, side + 1);
            mesh.triangles.insert(mesh.triangles.end(), {a, b, c, a, c, d});
        }
}

MeshDrawing make(const Settings& wanted) {
    const Settings knot{std::clamp(wanted.p, 1, MostTurns), std::clamp(wanted.q, 1, MostTurns),
                        std::clamp(wanted.thickness, Thinnest, Thickest)};
    const int rings = RingsPerTurn * std::max(knot.p, knot.q);
    Mesh mesh;
    for (int ring = 0; ring < rings; ++ring) {
        const double share = static_cast<double>(ring) / rings;
        addRing(mesh, frameAt(knot, 2 * std::numbers::pi * share), knot.thickness, hue(share));
    }
    addTriangles(mesh, rings);
    Model model;
    model.meshes.push_back(std::move(mesh));
    return MeshDrawing(std::move(model));
}

class KnotObject : public VGLRenderObject {
public:
    KnotObject(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : VGLRenderObject(name, 0, preferences) {
        for (auto* turns : {&p, &q}) {
            turns->setLimits({.min = 1, .max = MostTurns});
        }
        thickness.setLimits({.min = Thinnest, .max = Thickest});
    }

    void draw(VGLRenderContext& context) override { drawing(context.valuePool()).draw(); }
    [[nodiscard]] BoundingSphere bounds() const override { return drawing(VValuePool()).bounds(); }

private:
    const MeshDrawing& drawing(const VValuePool& pool) const {
        Settings settings;
        p.read(pool, settings.p);
        q.read(pool, settings.q);
        thickness.read(pool, settings.thickness);
        return kept.get(settings, make);
    }

    TypedSlot<int> p{this, "p", 2, 0};
    TypedSlot<int> q{this, "q", 3, 0};
    TypedSlot<double> thickness{this, "thickness", 0.24, 0};
    mutable Kept<Settings, MeshDrawing> kept;
};

KROD_ROW(5)
CreatorRegistration<KnotObject, void>
    creator({.category = "Scene",
             .source = "Knot",
             .name = "Knot",
             .group = "Demo",
             .help = "<p>A knot that winds around a torus, lit from the eye, in all hues along its length: "
                     "smooth shading, rounded outlines and one part in front of another.</p>"
                     "<ul><li><b>p</b>: turns around the axis, from 1 to 24.</li>"
                     "<li><b>q</b>: turns through the hole, from 1 to 24. Where p and q share a divisor, the "
                     "line closes early and is one of several.</li>"
                     "<li><b>thickness</b>: radius of the tube, from 0.01 to 1.</li></ul>",
             .description = "A smooth knot in all hues, lit from the eye."},
            0);
KROD_ROW(5)
const SlotTypes<int, double> slotTypes;

} // namespace
} // namespace workbench::objects::Knot
