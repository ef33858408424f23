// SPDX-License-Identifier: Apache-2.0
// The pictures that a network is to become.
#pragma once

#include "workbench/network/Network.h"

#include <optional>
#include <string>
#include <vector>

namespace workbench {

/// The file of each view: `pattern` with the view's name for {view}, or FILE_VIEW.exr in the current folder, FILE
/// being the network's `file` without folder and extension. Throws Failure(Usage) for a pattern that leads several
/// views to one file or whose extension names no format, and Failure(Network) where there is no view, or one
/// whose name cannot be a file's.
[[nodiscard]] std::vector<std::string> outputsOf(const Network& network, const std::string& file,
                                                 const std::optional<std::string>& pattern);

/// Refuses a view whose size, camera, background or tiles nobody could have meant: Failure(Network).
void requirePossible(const NetworkView& view, const std::string& who);

} // namespace workbench
