// SPDX-License-Identifier: Apache-2.0
// What stands between the texts of users and the driver.
#pragma once

#include "workbench/gl/ProgramCache.h"

#include "host/Export.h"

#include <chrono>
#include <filesystem>
#include <string>

namespace workbench {

/// The name that tile processors give to their vertex shader.
inline constexpr char TileVertexLabel[] = "* Tile Vertex Shader *";

/// How texts are looked at before the driver compiles them.
struct ShaderGuardSettings {
    bool checkTexts = true;               ///< refuse those that `objectionTo` objects to
    std::filesystem::path worker{};       ///< tries the programs of users first; empty: nothing does
    std::chrono::milliseconds time{8000}; ///< that a trial may take
};

/// For all sessions of this process, from now on.
KROD_API void setShaderGuard(ShaderGuardSettings settings);

/// Throws Failure(Shader) for a program that would not do the driver good: the check objects to its text, or
/// the worker did not survive it. Tried are programs that may come from a user: those of tile processors, and
/// those with a shader file in them; each once per driver and process. Where no trial can be made, a warning
/// says so once, and the program passes. A session must be current.
void requireHarmless(const ProgramTexts& texts, const std::string& driver, bool strict);

} // namespace workbench
