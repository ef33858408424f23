// SPDX-License-Identifier: Apache-2.0
// From the texts of a module to a program of the driver.
#pragma once

#include "workbench/gl/GLName.h"
#include "workbench/gl/ProgramCache.h"
#include "workbench/gl/dialect/Shims.h"

#include <string>

namespace workbench {

/// Compiles and links, with the shims that the texts need unless `strict`. Throws Failure(Shader): the
/// sentence names the label, the stage and the place of the first error, in lines of the text as it was
/// handed over or of the file that replaced its body; the details show every message at its line.
[[nodiscard]] GLName compileProgram(const ProgramTexts& texts, bool strict);

/// A module's text with the shims around it, exactly as the driver gets it. Needs no OpenGL.
[[nodiscard]] KROD_API std::string adaptedText(const std::string& text, ShaderStage stage, bool strict);

} // namespace workbench
