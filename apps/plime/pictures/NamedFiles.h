// SPDX-License-Identifier: Apache-2.0
// Files that a model refers to: textures, materials, buffers.
#pragma once

#include <filesystem>

namespace workbench {

/// Whether the bytes of a model, or of a material library (.mtl) that it names, hold a path that leads to the other
/// file, from the model's folder. Looks for the name of the other file alone, so that it needs to know no format. A
/// file that cannot be read names nothing.
[[nodiscard]] bool namesFile(const std::filesystem::path& model, const std::filesystem::path& other);

} // namespace workbench
