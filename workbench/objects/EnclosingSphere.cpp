// SPDX-License-Identifier: Apache-2.0
#include "workbench/objects/EnclosingSphere.h"

#include <glm/common.hpp>
#include <glm/geometric.hpp>

#include <algorithm>
#include <limits>

namespace workbench::objects {

std::optional<ContentBox> enclosingBox(const std::vector<std::span<const glm::vec3>>& lists) {
    glm::dvec3 low(std::numeric_limits<double>::max()), high(std::numeric_limits<double>::lowest());
    for (const auto& points : lists)
        for (const glm::dvec3 point : points) {
            low = glm::min(low, point);
            high = glm::max(high, point);
        }
    if (low.x > high.x) return std::nullopt;
    return ContentBox{low, high};
}

krod::BoundingSphere enclosingSphere(const std::vector<std::span<const glm::vec3>>& lists) {
    const auto box = enclosingBox(lists);
    if (!box) return {};
    const glm::dvec3 centre = box->low + (box->high - box->low) / 2.0;
    double radius = 0;
    for (const auto& points : lists)
        for (const glm::dvec3 point : points) radius = std::max(radius, glm::distance(centre, point));
    return {centre.x, centre.y, centre.z, radius};
}

} // namespace workbench::objects
