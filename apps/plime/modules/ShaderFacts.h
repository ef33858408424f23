// SPDX-License-Identifier: Apache-2.0
// Facts about the GLSL text of a tile processor, as far as the text alone tells them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// Whether a program asks where it is in the tile for anything but its own pixel.
[[nodiscard]] bool asksForPlace(std::string text);

/// Whether a program can give a pixel a colour at all: it names one of OpenGL's outputs, or declares its own.
[[nodiscard]] bool namesAnOutput(const std::string& text);

/// What a program declares and uses, but nobody gives a value: uniforms other than "frame" and without a value of
/// their own, and inputs. Each as "the uniform gain" or "the input uv", in the order of the text.
[[nodiscard]] std::vector<std::string> unfedNames(const std::string& text);

} // namespace workbench
