// SPDX-License-Identifier: Apache-2.0
// Scene/Galaxy - shows a spiral galaxy of points whose light adds up to far above 1 in its core.     (row 4)
//     arm angle = turn + Winding x ln(r), radii exponential, P(intensity > i) = (i / Faintest)^(1 -
//     Steepness)
#include "workbench/objects/Kept.h"
#include "workbench/objects/PointDrawing.h"

#include "host/gl/VGLRenderObject.h"
#include "plugin/Registration.h"

#include <glm/common.hpp>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

namespace workbench::objects::Galaxy {
namespace {

using namespace krod;

constexpr int MostStars = 10'000'000; // 280 MB
constexpr double Winding = 3.2;       // radians per factor e of radius
constexpr double Faintest = 0.025, Brightest = 400, Steepness = 2.4;
constexpr double Tilt = 0.8, Roll = 0.32; // of the disc towards +z, radians

struct Settings {
    int seed = 1;
    int count = 200000;
    friend bool operator==(const Settings&, const Settings&) = default;
};

/// Random numbers that are the same with every standard library, whose own distributions differ.
class Dice {
public:
    explicit Dice(int seed) : source(static_cast<std::mt19937::result_type>(seed)) {}

    /// Between 0 and 1, neither of them included.
    double uniform() { return (static_cast<double>(source()) + 0.5) / 4294967296.0; }
    /// From `low` to `high`.
    double between(double low, double high) { return low + (high - low) * uniform(); }
    /// Mean 0, deviation 1, by the method of Box and Muller.
    double normal() {
        const double radius = std::sqrt(-2 * std::log(uniform()));
        return radius * std::cos(2 * std::numbers::pi * uniform());
    }
    /// Exponential with that mean, thinning out towards 1, which it does not reach.
    double radius(double mean) {
        for (;;) {
            const double value = -mean * std::log(uniform());
            if (uniform() > value * value * value) return value;
        }
    }

private:
    std::mt19937 source;
};

/// Power law between Faintest and Brightest.
double starIntensity(Dice& dice) {
    return std::min(Faintest * std::pow(dice.uniform(), 1 / (1 - Steepness)), Brightest);
}

glm::dvec3 mixed(const glm::dvec3& from, const glm::dvec3& to, double share) {
    return glm::mix(from, to, std::clamp(share, 0.0, 1.0));
}

struct Star {
    glm::dvec3 place; // in the plane of the disc, z across it
    glm::dvec3 colour;
};

constexpr glm::dvec3 Old(1.0, 0.72, 0.42), White(1.0, 0.95, 0.88), Young(0.45, 0.66, 1.0),
    Nebula(1.0, 0.28, 0.42);

/// The bright middle: old stars, a ball that is a little flat.
Star bulgeStar(Dice& dice) {
    const double radius = dice.radius(0.06);
    const double height = dice.between(-1, 1), turn = dice.between(0, 2 * std::numbers::pi);
    const double across = radius * std::sqrt(1 - height * height);
    return {{across * std::cos(turn), across * std::sin(turn), 0.7 * radius * height},
            mixed(White, Old, radius / 0.15) * 1.6};
}

/// Two feathered arms; young stars along their middle, and glowing clouds at even distances.
Star armStar(Dice& dice) {
    const double radius = std::max(dice.radius(0.45), 0.02);
    const double off = dice.normal() * 0.3;
    const double arm = dice.uniform() < 0.5 ? 0 : std::numbers::pi;
    const double turn = arm + Winding * std::log(radius) + off;
    const bool inCloud = std::abs(off) < 0.13 && std::sin(50 * radius + arm) > 0.75 && dice.uniform() < 0.4;
    const glm::dvec3 colour = inCloud ? Nebula * 2.5 : mixed(Young, White, std::abs(off) / 0.7);
    return {{radius * std::cos(turn), radius * std::sin(turn), 0.012 * dice.normal()}, colour};
}

/// The even disc between the arms.
Star discStar(Dice& dice) {
    const double radius = dice.radius(0.4), turn = dice.between(0, 2 * std::numbers::pi);
    return {{radius * std::cos(turn), radius * std::sin(turn), 0.025 * dice.normal()},
            mixed(Old, White, radius) * 0.6};
}

glm::vec3 tilted(const glm::dvec3& p) {
    const glm::dvec3 q(p.x, p.y * std::cos(Tilt) - p.z * std::sin(Tilt),
                       p.y * std::sin(Tilt) + p.z * std::cos(Tilt));
    return {q.x * std::cos(Roll) - q.y * std::sin(Roll), q.x * std::sin(Roll) + q.y * std::cos(Roll), q.z};
}

PointDrawing make(const Settings& settings) {
    Dice dice(settings.seed);
    PointSet stars;
    for (int i = std::clamp(settings.count, 0, MostStars); i > 0; --i) {
        const double kind = dice.uniform();
        const Star star = kind < 0.2 ? bulgeStar(dice) : kind < 0.78 ? armStar(dice) : discStar(dice);
        stars.positions.push_back(tilted(star.place));
        stars.colours.emplace_back(glm::vec3(star.colour * starIntensity(dice)), 1.0F);
    }
    return PointDrawing(std::move(stars));
}

class GalaxyObject : public VGLRenderObject {
public:
    GalaxyObject(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : VGLRenderObject(name, 0, preferences) {
        count.setLimits({.min = 1, .max = MostStars});
        size.setLimits({.min = 1.0, .max = 64.0});
    }

    void draw(VGLRenderContext& context) override {
        double pixels = 2;
        size.read(context.valuePool(), pixels);
        drawing(context.valuePool()).draw(pixels, 1);
    }
    [[nodiscard]] BoundingSphere bounds() const override { return drawing(VValuePool()).bounds(); }

private:
    const PointDrawing& drawing(const VValuePool& pool) const {
        Settings settings;
        seed.read(pool, settings.seed);
        count.read(pool, settings.count);
        return kept.get(settings, make);
    }

    TypedSlot<int> seed{this, "seed", 1, 0};
    TypedSlot<int> count{this, "count", 200000, 0};
    TypedSlot<double> size{this, "size", 2.0, 0};
    mutable Kept<Settings, PointDrawing> kept;
};

KROD_ROW(4)
CreatorRegistration<GalaxyObject, void> creator(
    {.category = "Scene",
     .source = "Galaxy",
     .name = "Galaxy",
     .group = "Demo",
     .help = "<p>A spiral galaxy of points whose light adds up: in its core to many times 1, in its "
             "arms to a few hundredths. For everything that deals with large ranges of brightness.</p>"
             "<ul><li><b>seed</b>: another number gives other stars.</li>"
             "<li><b>count</b>: the number of stars, from 1 to 10000000.</li>"
             "<li><b>size</b>: width of a star in pixels, from 1 to 64.</li></ul>",
     .description = "A spiral galaxy of adding points, core far above 1."},
    0);
KROD_ROW(4)
const SlotTypes<int, double> slotTypes;

} // namespace
} // namespace workbench::objects::Galaxy
