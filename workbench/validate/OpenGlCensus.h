// SPDX-License-Identifier: Apache-2.0
// What OpenGL holds: its state, and its objects.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace workbench::validate {

/// State by what to call it. Two of them are compared with ==.
using OpenGlState = std::map<std::string, std::vector<double>>;

/// The state that drawing can change, of the current context.
[[nodiscard]] OpenGlState openGlState();

/// The number of objects by kind, of the current context: textures, framebuffers, buffers, shaders, programs,
/// vertex arrays and renderbuffers with names up to 16,384.
[[nodiscard]] std::map<std::string, std::size_t> openGlObjects();

} // namespace workbench::validate
