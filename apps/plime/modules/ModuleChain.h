// SPDX-License-Identifier: Apache-2.0
// The modules of a command line: which, in which order, with which parameters.
#pragma once

#include <string>
#include <vector>

namespace workbench {

/// `-p NAME=VALUE`.
struct ParameterSetting {
    std::string name;
    std::string text;
};

/// One module and what the arguments behind it say.
struct ModuleRequest {
    std::string key;                        ///< KEY or KEY@SOURCE; empty for the command's own module
    std::vector<ParameterSetting> settings; ///< in the order of the command line, each name once
    std::vector<std::string> unset;         ///< parameters to be made unreadable
};

/// Everything about modules that a command line says.
struct ModuleChain {
    ModuleRequest own;                   ///< what stands before the first group: for the command's own KEY
    std::vector<ModuleRequest> displays; ///< `--display`, the first nearest to the object
    std::vector<ModuleRequest> tiles;    ///< `--with`, in the order of their work
    bool unchecked = false;              ///< `--unchecked`: values outside their limits are accepted
};

/// Which module arguments a command takes. Those of a kind that it does not take are left in the list.
struct ModuleGroups {
    bool own = false;      ///< `-p` and `--unset` may stand before the first group
    bool displays = false; ///< `--display KEY[@SOURCE]`
    bool tiles = false;    ///< `--with KEY`
};

/// Takes `--display`, `--with`, `-p`, `--unset` and `--unchecked` with their values out of the arguments of
/// a command and leaves the rest in its order. `-p` and `--unset` belong to the `--display` or `--with`
/// before them. "--option=value" and "-pNAME=VALUE" are read too; "--" ends the reading. Throws
/// Failure(Usage) for a missing value, for a setting without name or "=", for one that belongs to no module,
/// and for a second one of the same parameter of a module.
[[nodiscard]] ModuleChain takeModuleChain(std::vector<std::string>& arguments, const ModuleGroups& groups);

} // namespace workbench
