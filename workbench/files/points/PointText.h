// SPDX-License-Identifier: Apache-2.0
// Point lists as text: XYZ and CSV.
#pragma once

#include "workbench/files/Points.h"

#include <string_view>

namespace workbench {

/// Reads the whole text of `path`, as described at readPoints.
[[nodiscard]] PointSet readPointText(const std::filesystem::path& path, std::string_view text);

} // namespace workbench
