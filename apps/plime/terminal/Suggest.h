// SPDX-License-Identifier: Apache-2.0
// "Did you mean …?"
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// The number of insertions, deletions, replacements and swaps of neighbours that turn one text into the
/// other. Letters count as equal in either case.
[[nodiscard]] std::size_t editDistance(std::string_view a, std::string_view b);

/// The candidate nearest to what was typed; of "Display/CMYK" the part behind the stroke is tried as well.
/// Nothing when no candidate is near enough to be meant.
[[nodiscard]] std::optional<std::string> nearest(std::string_view typed,
                                                 const std::vector<std::string>& candidates);

/// `Did you mean "x"?` for the nearest candidate, else `otherwise`. Made for Diagnostic::advice.
[[nodiscard]] std::string didYouMean(std::string_view typed, const std::vector<std::string>& candidates,
                                     const std::string& otherwise);

} // namespace workbench
