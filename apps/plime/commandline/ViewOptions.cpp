// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/commandline/ViewOptions.h"

#include "apps/plime/terminal/Numbers.h"
#include "workbench/files/PictureDescription.h"
#include "workbench/report/Failure.h"

#include "host/values/VValueTrait.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace workbench {
namespace {

[[noreturn]] void refuse(const std::string& option, const std::string& expected, const std::string& got) {
    throw Failure(Fault::Usage, {option, "cannot be read", expected, '"' + got + '"', "", {}});
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = std::min(text.find(separator, at), text.size());
        parts.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return parts;
}

/// From `least` to `most` numbers with commas between them.
std::vector<double> numbers(const std::string& text, std::size_t least, std::size_t most,
                            const std::string& option, const std::string& expected,
                            const std::string& whole) {
    std::vector<double> values;
    for (const std::string& part : split(text, ',')) {
        double value = 0;
        if (!krod::VValueTrait<double>::setValueFromText(value, part)) refuse(option, expected, whole);
        values.push_back(value);
    }
    if (values.size() < least || values.size() > most) refuse(option, expected, whole);
    return values;
}

glm::dvec3 point(const std::string& text, const std::string& option, const std::string& expected,
                 const std::string& whole) {
    const std::vector<double> xyz = numbers(text, 3, 3, option, expected, whole);
    return {xyz[0], xyz[1], xyz[2]};
}

float singlePrecision(double value, const std::string& option, const std::string& whole) {
    if (std::abs(value) > std::numeric_limits<float>::max())
        throw Failure(
            Fault::Usage,
            {option, "is beyond what can be drawn", "values of single precision", '"' + whole + '"', "", {}});
    return static_cast<float>(value);
}

void readSize(const std::string& text, FrameSetup& setup) {
    const std::size_t cross = text.find('x');
    if (cross == std::string::npos) refuse("--size", "WIDTHxHEIGHT in pixels, like 1920x1080", text);
    setup.width = wholeNumber("--size", text.substr(0, cross), 1, LargestSide);
    setup.height = wholeNumber("--size", text.substr(cross + 1), 1, LargestSide);
    if (std::int64_t{setup.width} * setup.height > MostPixels)
        throw Failure(Fault::Usage, {"--size",
                                     "is too large",
                                     "at most " + std::to_string(MostPixels) + " pixels in all",
                                     text,
                                     "",
                                     {}});
}

/// Eye, target and angle, without planes.
void readCamera(const std::string& text, Camera& camera) {
    const std::string expected =
        "EX,EY,EZ:TX,TY,TZ[:FOV], eye and target in world units and an angle in degrees";
    const std::vector<std::string> parts = split(text, ':');
    if (parts.size() < 2 || parts.size() > 3) refuse("--camera", expected, text);
    camera.fieldOfView = parts.size() == 3 ? numbers(parts[2], 1, 1, "--camera", expected, text)[0]
                                           : Camera::DefaultFieldOfView;
    camera.eye = point(parts[0], "--camera", expected, text);
    camera.target = point(parts[1], "--camera", expected, text);
}

glm::dvec3 pointOf(const std::array<double, 3>& p) { return {p[0], p[1], p[2]}; }

/// What a saved view says besides its camera.
FrameSetup frameOf(const NetworkView& saved) {
    FrameSetup setup;
    if (saved.size) {
        setup.width = (*saved.size)[0];
        setup.height = (*saved.size)[1];
    }
    if (saved.background)
        std::ranges::transform(*saved.background, setup.background.begin(),
                               [](double value) { return static_cast<float>(value); });
    if (saved.tiles) setup.tiles = {saved.tiles->width, saved.tiles->overlap};
    return setup;
}

} // namespace

Camera cameraOf(const NetworkView::Camera& saved, const krod::BoundingSphere& bounds) {
    return Camera::between(pointOf(saved.eye), pointOf(saved.target), pointOf(saved.up), saved.fieldOfView,
                           bounds);
}

void ViewOptions::addTo(Syntax& syntax) {
    syntax.options.push_back({"--size", &size});
    syntax.options.push_back({"--camera", &camera});
    syntax.options.push_back({"--up", &up});
    syntax.options.push_back({"--background", &background});
    syntax.options.push_back({"--tile", &tile});
    syntax.options.push_back({"--overlap", &overlap});
}

Camera ViewOptions::typedCamera(const Camera& asked, const krod::BoundingSphere& bounds) const {
    try {
        return Camera::between(asked.eye, asked.target, asked.up, asked.fieldOfView, bounds);
    } catch (const Failure& failure) {
        Diagnostic message = failure.diagnostic();
        const bool isUp = message.who == "up";
        const bool blamesUp = isUp ? up.has_value() : !camera;
        message.who = blamesUp ? "--up" : "--camera";
        message.got = '"' + (blamesUp ? *up : *camera) + '"';
        if (isUp && !blamesUp) message.advice = "Choose one with --up";
        throw Failure(failure.fault(), message);
    }
}

Camera ViewOptions::cameraOf(const SceneExtent& scene, double aspect) const {
    Camera view = scene.plane ? Camera::facing(scene.plane->high - scene.plane->low, aspect)
                              : Camera::fitted(scene.bounds, aspect);
    const bool isUsual = !camera && !up && !(saved && saved->camera);
    if (isUsual && scene.origin == glm::dvec3(0)) return view;
    // Through the coordinates that people and networks use, so that a saved view is exactly the same again.
    view.eye += scene.origin, view.target += scene.origin;
    if (saved && saved->camera) view = workbench::cameraOf(*saved->camera, {});
    if (up) view.up = point(*up, "--up", "X,Y,Z, a direction in world units", *up);
    if (camera) readCamera(*camera, view);
    view.eye -= scene.origin, view.target -= scene.origin;
    if (camera || up) return typedCamera(view, scene.bounds);
    return Camera::between(view.eye, view.target, view.up, view.fieldOfView, scene.bounds);
}

FrameSetup ViewOptions::frameOf(const SceneExtent& scene) const {
    FrameSetup setup = saved ? workbench::frameOf(*saved) : FrameSetup{};
    if (size) readSize(*size, setup);
    if (tile) setup.tiles.size = wholeNumber("--tile", *tile, SmallestAskedTile, LargestDrawnTile);
    if (overlap) setup.tiles.overlap = wholeNumber("--overlap", *overlap, 0, LargestOverlap);
    const double aspect = static_cast<double>(setup.width) / setup.height;
    setup.camera = cameraOf(scene, aspect);
    if (background) {
        const auto rgba = numbers(*background, 3, 4, "--background", "R,G,B[,A], linear values", *background);
        for (std::size_t i = 0; i < rgba.size(); ++i)
            setup.background[i] = singlePrecision(rgba[i], "--background", *background);
    }
    return setup;
}

} // namespace workbench
