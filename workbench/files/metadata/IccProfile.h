// SPDX-License-Identifier: Apache-2.0
// Checks of ICC color profiles: ICC.1, section 7.
#pragma once

#include <string_view>

namespace workbench {

/// The name under which a picture's color profile is kept, as bytes.
inline constexpr std::string_view IccName = "ICCProfile";

/// True where a profile is whole and belongs to pixels of one value (grey) or of three (red, green, blue); where
/// they are encoded as sRGB, it must be of sRGB as well.
[[nodiscard]] bool isProfileOf(std::string_view profile, bool isGrey, bool isSrgb);

/// True where its description says that it is sRGB.
[[nodiscard]] bool isSrgbProfile(std::string_view profile);

} // namespace workbench
