// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/points/PointBuilder.h"

#include <glm/common.hpp>
#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace workbench {
namespace {

/// Colours are taken for bytes where they are whole numbers and the largest is at least this: a list of light
/// that adds up may hold a few small whole numbers.
constexpr double LeastOfBytes = 16, LargestByte = 255;
/// Radii between 0 and the middle of the points from which on an origin of their own keeps them apart.
constexpr double FarAway = 16;

bool isByte(double value) { return value >= 0 && value <= LargestByte && value == std::floor(value); }

} // namespace

std::optional<PointField> pointField(std::string_view name) {
    constexpr std::pair<std::string_view, PointField> Names[] = {
        {"x", PointField::X},         {"y", PointField::Y},     {"z", PointField::Z},
        {"red", PointField::Red},     {"r", PointField::Red},   {"diffuse_red", PointField::Red},
        {"green", PointField::Green}, {"g", PointField::Green}, {"diffuse_green", PointField::Green},
        {"blue", PointField::Blue},   {"b", PointField::Blue},  {"diffuse_blue", PointField::Blue},
        {"alpha", PointField::Alpha}, {"a", PointField::Alpha}, {"intensity", PointField::Intensity},
    };
    std::string lower(name);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    for (const auto& [known, field] : Names)
        if (known == lower) return field;
    return std::nullopt;
}

std::string nameOf(PointField field) {
    constexpr const char* Names[PointFields] = {"x", "y", "z", "red", "green", "blue", "alpha", "intensity"};
    return Names[static_cast<std::size_t>(field)];
}

void PointBuilder::reserve(std::size_t count) {
    places.reserve(count);
    set.colours.reserve(count);
}

void PointBuilder::add(const PointValues& values) {
    const auto number = [&](PointField field) { return values[static_cast<std::size_t>(field)]; };
    const auto colour = [&](PointField field) {
        return static_cast<float>(number(field) * number(PointField::Intensity));
    };
    const glm::dvec3 place(number(PointField::X), number(PointField::Y), number(PointField::Z));
    const glm::vec4 rgba(colour(PointField::Red), colour(PointField::Green), colour(PointField::Blue),
                         static_cast<float>(number(PointField::Alpha)));
    const glm::vec3 single(place);
    for (const float v : {single.x, single.y, single.z, rgba.r, rgba.g, rgba.b, rgba.a})
        if (!std::isfinite(v)) {
            ++set.droppedPoints;
            return;
        }
    for (const auto field : {PointField::Red, PointField::Green, PointField::Blue, PointField::Alpha}) {
        areColoursBytes = areColoursBytes && isByte(number(field));
        double& largest = field == PointField::Alpha ? largestAlpha : largestColour;
        largest = std::max(largest, number(field));
    }
    places.push_back(place);
    set.colours.push_back(rgba);
}

void PointBuilder::scaleColours() {
    set.hasEightBitColours = areColoursBytes && largestColour >= LeastOfBytes;
    const double divisor = set.hasEightBitColours ? LargestByte : colourScale;
    const glm::dvec4 scale(glm::dvec3(divisor), largestAlpha > 1 ? divisor : 1.0);
    if (divisor == 1) return;
    for (glm::vec4& colour : set.colours) colour = glm::vec4(glm::dvec4(colour) / scale);
}

PointSet PointBuilder::take() {
    scaleColours();
    glm::dvec3 low(std::numeric_limits<double>::max()), high(std::numeric_limits<double>::lowest());
    for (const glm::dvec3& place : places) low = glm::min(low, place), high = glm::max(high, place);
    const glm::dvec3 centre = low + (high - low) / 2.0;
    const double radius = glm::distance(low, high) / 2;
    if (!places.empty() && glm::length(centre) > FarAway * (radius > 0 ? radius : 1)) set.origin = centre;
    if (!places.empty()) set.low = low, set.high = high;
    set.positions.reserve(places.size());
    for (const glm::dvec3& place : places) set.positions.emplace_back(place - set.origin);
    places = {};
    return std::exchange(set, {});
}

} // namespace workbench
