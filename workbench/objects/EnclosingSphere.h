// SPDX-License-Identifier: Apache-2.0
// Where points lie.
#pragma once

#include "host/rendering/BoundingSphere.h"

#include <glm/vec3.hpp>

#include <span>
#include <vector>

namespace workbench::objects {

/// The smallest sphere around the middle of the points' bounding box that holds all of them; empty without
/// points.
[[nodiscard]] krod::BoundingSphere enclosingSphere(const std::vector<std::span<const glm::vec3>>& lists);

} // namespace workbench::objects
