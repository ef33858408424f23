// SPDX-License-Identifier: Apache-2.0
// Help on subjects that belong to no single command: points, networks, shaders, environment.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// A subject of "plime help".
struct Topic {
    std::string_view name;    ///< "points"
    std::string_view purpose; ///< one line without a full stop
    std::string_view text;    ///< wrapped at 80 columns
};

/// All of them, in the order of the alphabet.
[[nodiscard]] const std::vector<Topic>& helpTopics();

} // namespace workbench
