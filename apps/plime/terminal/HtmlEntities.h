// SPDX-License-Identifier: Apache-2.0
// Named characters of HTML.
#pragma once

#include <string_view>

namespace workbench {

/// The code point of "beta" or "nbsp", as it stands between "&" and ";"; 0 for a name that is not known.
[[nodiscard]] unsigned long namedCharacter(std::string_view name);

} // namespace workbench
