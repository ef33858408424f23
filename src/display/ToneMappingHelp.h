// SPDX-License-Identifier: Apache-2.0
// What both displays of the key "Display/Depth" say about themselves.
#pragma once

#include <string>

namespace plime::display {

/// The detailed text, HTML, at level 2; one sentence at every other.
[[nodiscard]] std::string toneMappingHelp(int level);

} // namespace plime::display
