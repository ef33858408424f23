// SPDX-License-Identifier: Apache-2.0
// What a plug-in draws and writes, in a form that an expectation file can keep.
#pragma once

#include "workbench/validate/Module.h"

#include <string>
#include <vector>

namespace workbench::validate {

/// The size of the pictures that are compared.
inline constexpr int PictureSide = 64;
/// The number of drawn settings whose shader texts are compared.
inline constexpr int SettingCount = 20;

/// Some pixels of a square picture, "COLUMN ROW RED GREEN BLUE ALPHA" each, with rows from the top. Pixels
/// next to which the colour jumps are left out: where an edge lies depends on the driver.
[[nodiscard]] std::vector<std::string> probesOf(const Pixels& picture);

/// What is wrong with the picture at a probe, or an empty text. A colour may be off by 2/255, or by 2^-9 of
/// itself where that is more. Throws std::runtime_error for a text that is no probe of such a picture.
[[nodiscard]] std::string deviation(const Pixels& picture, const std::string& probe);

/// The drawn settings of a module, the same each time: what they are, and the sum of the shader texts there.
struct SettingText {
    std::string setting; ///< " with width = "3", …"
    std::string sum;     ///< eight digits; empty where there is no text
};
[[nodiscard]] std::vector<SettingText> settingTexts(krod::VObject& object);

} // namespace workbench::validate
