// SPDX-License-Identifier: Apache-2.0
// What stands between the texts of users and the driver.
#pragma once

#include "workbench/gl/ProgramCache.h"
#include "workbench/report/Failure.h"

#include "host/Export.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

namespace workbench {

/// The name that tile processors give to their vertex shader.
inline constexpr char TileVertexLabel[] = "* Tile Vertex Shader *";

/// How texts are looked at before the driver compiles them.
struct ShaderGuardSettings {
    bool checkTexts = true;               ///< refuse those that `objectionTo` objects to
    std::filesystem::path worker{};       ///< tries the programs of users first; empty: nothing does
    std::chrono::milliseconds time = usualTime(); ///< that a trial may take
    /// Told, in a thread of its own, that a program of a user draws without an end; see DrawingWatch. The thread
    /// that draws never comes back from OpenGL, so this ends the process. Null: nobody watches.
    void (*stuck)(const Diagnostic& message) = nullptr;

    /// 8 s, or as many as the environment variable KROD_SHADER_SECONDS says, up to 3600.
    [[nodiscard]] KROD_API static std::chrono::milliseconds usualTime();
};

/// For all sessions of this process, from now on.
KROD_API void setShaderGuard(ShaderGuardSettings settings);
[[nodiscard]] ShaderGuardSettings shaderGuard();

/// Throws Failure(Shader) for a program that would not do the driver good: the check objects to its text, or
/// the worker did not survive it. Tried are programs that may come from a user: those of tile processors, and
/// those with a shader file in them; each once per driver and process. Where no trial can be made, a warning
/// says so once, and the program passes. Returns the seconds that a pixel took in the trial, 0 where there was
/// none, and nothing for a program that cannot come from a user. A session must be current.
[[nodiscard]] std::optional<double> requireHarmless(const ProgramTexts& texts, const std::string& driver, bool strict);

} // namespace workbench
