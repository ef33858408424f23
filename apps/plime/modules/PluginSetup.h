// SPDX-License-Identifier: Apache-2.0
// Which plug-ins are loaded, and from where.
#pragma once

#include "workbench/core/PluginManager.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace workbench {

/// Why a path was looked at.
enum class PluginOrigin {
    CommandLine, ///< --plugin
    Environment, ///< KROD_PLUGIN_PATH
    Default,     ///< the folder of the build or of the installation
};

/// One path that was looked at: a library, or a folder that could not be read or holds none.
struct PluginAttempt {
    enum class Outcome {
        Loaded,     ///< its creators are registered
        PassedOver, ///< a library of the same name was there before; nothing is wrong
        Empty,      ///< a folder without libraries
        Failed,     ///< `reason` says why
    };
    std::string path; ///< absolute
    PluginOrigin origin = PluginOrigin::Default;
    Outcome outcome = Outcome::Failed;
    std::string name; ///< of the plug-in; empty when it is not known
    std::optional<Diagnostic> reason;
};

/// What of the surroundings decides which plug-ins are loaded.
struct PluginSources {
    std::vector<std::string> commandLine; ///< files and folders
    std::string environment;              ///< files and folders with colons between them; may be empty
    std::vector<std::filesystem::path> defaultFolders; ///< the first one that exists counts
};

/// The folders of the build and of the installation for a program in `executableFolder`.
[[nodiscard]] std::vector<std::filesystem::path>
defaultPluginFolders(const std::filesystem::path& executableFolder);

/// The folder of this program's file.
[[nodiscard]] std::filesystem::path executableFolder();

/// Loads everything, command line first, folders in the order of their files' names. The first library of
/// one name wins. Failures are returned, not thrown.
[[nodiscard]] std::vector<PluginAttempt> loadPlugins(PluginManager& manager, const PluginSources& sources);

} // namespace workbench
