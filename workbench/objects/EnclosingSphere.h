// SPDX-License-Identifier: Apache-2.0
// Where points lie.
#pragma once

#include "workbench/files/FileContent.h"

#include "host/rendering/BoundingSphere.h"

#include <glm/vec3.hpp>

#include <optional>
#include <span>
#include <vector>

namespace workbench::objects {

/// The smallest box around all points with its sides along the axes; nothing without points.
[[nodiscard]] std::optional<ContentBox> enclosingBox(const std::vector<std::span<const glm::vec3>>& lists);

/// The smallest sphere around the middle of the points' bounding box that holds all of them; empty without
/// points.
[[nodiscard]] krod::BoundingSphere enclosingSphere(const std::vector<std::span<const glm::vec3>>& lists);

} // namespace workbench::objects
