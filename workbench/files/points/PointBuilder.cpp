// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/points/PointBuilder.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

namespace workbench {

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

void appendPoint(const PointValues& values, PointSet& points) {
    const auto number = [&](PointField field) { return values[static_cast<std::size_t>(field)]; };
    const auto colour = [&](PointField field) {
        return static_cast<float>(number(field) * number(PointField::Intensity));
    };
    const glm::vec3 position(number(PointField::X), number(PointField::Y), number(PointField::Z));
    const glm::vec4 rgba(colour(PointField::Red), colour(PointField::Green), colour(PointField::Blue),
                         static_cast<float>(number(PointField::Alpha)));
    for (const float v : {position.x, position.y, position.z, rgba.r, rgba.g, rgba.b, rgba.a})
        if (!std::isfinite(v)) {
            ++points.droppedPoints;
            return;
        }
    points.positions.push_back(position);
    points.colours.push_back(rgba);
}

} // namespace workbench
