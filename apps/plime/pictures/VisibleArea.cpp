// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/VisibleArea.h"

#include "workbench/files/FileContent.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace workbench {
namespace {

constexpr double LeastShare = 0.001;         // of the picture
constexpr double Flat = 0.01;                // thickness divided by the largest extent
constexpr double EdgeOn = 0.1;               // cosine between line of sight and the thin axis
constexpr float SameBackground = 1 / 500.0F; // halves have steps of up to 1/1024
constexpr int DigitsOfRadius = 3;

/// The thinnest axis of a flat box: 0, 1 or 2; -1 where it is not flat.
int thinAxis(const ContentBox& box) {
    const glm::dvec3 size = box.high - box.low;
    const double least = std::min({size.x, size.y, size.z}), most = std::max({size.x, size.y, size.z});
    if (!(least < Flat * most)) return -1;
    return least == size.z ? 2 : least == size.y ? 1 : 0;
}

bool isEdgeOn(const ContentBox& box, const Camera& camera) {
    const int axis = thinAxis(box);
    return axis >= 0 && std::abs(glm::normalize(camera.target - camera.eye)[axis]) < EdgeOn;
}

/// Coordinates for a command line, as exact as a view of that radius needs them.
std::string typed(const glm::dvec3& place, double radius) {
    const double step = std::pow(10.0, std::floor(std::log10(radius)) - DigitsOfRadius);
    std::string text;
    for (int i = 0; i < 3; ++i) {
        char number[32];
        std::snprintf(number, sizeof number, "%.12g", std::round(place[i] / step) * step + 0.0);
        text += (i > 0 ? "," : "") + std::string(number);
    }
    return text;
}

/// The options that show a scene from its broad side.
std::string cameraFor(const DrawnScene& drawn, const std::optional<ContentBox>& box) {
    const double aspect = static_cast<double>(drawn.setup.width) / drawn.setup.height;
    const Camera usual = Camera::fitted(drawn.extent.bounds, aspect);
    const int axis = box ? thinAxis(*box) : 2;
    glm::dvec3 way(0);
    way[axis < 0 ? 2 : axis] = usual.eye.z - usual.target.z;
    const glm::dvec3 target = usual.target + drawn.extent.origin;
    const double radius = drawn.extent.bounds.radius;
    return "--camera " + typed(target + way, radius) + ':' + typed(target, radius) +
           (axis == 1 ? " --up 0,0,-1" : "");
}

bool isDark(const FrameSetup& setup) {
    return std::all_of(setup.background.begin(), setup.background.begin() + 3,
                       [](float v) { return v == 0; });
}

} // namespace

VisibleArea::VisibleArea(const std::array<float, 4>& background, bool isBehindDisplays) {
    if (!isBehindDisplays) std::copy_n(background.begin(), 3, nothing.begin());
}

void VisibleArea::add(const std::vector<krod::RGBAHalf>& pixels) {
    const auto differs = [](float value, float from) {
        return std::abs(value - from) > SameBackground * std::abs(from);
    };
    for (const krod::RGBAHalf& p : pixels)
        seen += differs(p.r, nothing[0]) || differs(p.g, nothing[1]) || differs(p.b, nothing[2]);
    all += pixels.size();
}

double VisibleArea::share() const noexcept {
    return all == 0 ? 1 : static_cast<double>(seen) / static_cast<double>(all);
}

void warnOfUnseen(Report& report, const DrawnScene& drawn, const VisibleArea& visible) {
    if (visible.share() >= LeastShare || !(drawn.extent.bounds.radius > 0)) return;
    const auto* const content = dynamic_cast<const FileContent*>(&drawn.scene.object());
    const ContentFacts facts = content ? content->facts() : ContentFacts{};
    const bool isEmpty = visible.share() == 0;
    const bool fromEdge = facts.box && isEdgeOn(*facts.box, drawn.setup.camera);
    if (facts.isBlack && isDark(drawn.setup)) {
        report.warning(
            {drawn.input, "is black, and so is the background", "", "", "Type --background 1,1,1", {}});
    } else if (fromEdge) {
        report.warning({drawn.input,
                        "is flat and seen from its edge",
                        "",
                        "",
                        "Type " + cameraFor(drawn, facts.box),
                        {}});
    } else if (isEmpty && !drawn.lastDisplay.empty()) {
        report.warning({drawn.input,
                        "makes a picture that is black all over",
                        "",
                        "",
                        "Try other parameters: plime help " + drawn.lastDisplay,
                        {}});
    } else if (isEmpty || (facts.box && drawn.scene.entry().key == "Scene/Model")) {
        report.warning({drawn.input,
                        isEmpty ? "is not seen in the picture" : "takes less than 0.1 % of the picture",
                        "",
                        "",
                        "Type " + cameraFor(drawn, facts.box),
                        {}});
    }
}

} // namespace workbench
