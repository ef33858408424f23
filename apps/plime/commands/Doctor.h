// SPDX-License-Identifier: Apache-2.0
// What of this machine works.
#pragma once

#include "apps/plime/modules/PluginSetup.h"
#include "workbench/platform/EglContext.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace workbench {

/// Everything that `plime doctor` finds out.
struct Findings {
    std::string hostDate;
    std::string compiler;
    std::vector<PluginAttempt> plugins;
    std::vector<GpuDevice> devices;
    std::optional<ContextProperties> opengl; ///< of the device that --gpu chooses; none: no usable OpenGL
    bool halvesRoundToNearest = false;
    std::vector<std::filesystem::path> shaderFolders;
    std::vector<Diagnostic> problems; ///< of what is needed; empty when everything works
};

/// Looks at everything; makes OpenGL contexts for a moment.
[[nodiscard]] Findings examine(const std::vector<PluginAttempt>& plugins, const GpuChoice& gpu,
                               std::vector<std::filesystem::path> shaderFolders);

} // namespace workbench
