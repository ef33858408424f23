// SPDX-License-Identifier: Apache-2.0
// From the words of the command line to what they mean.
#pragma once

#include "apps/plime/commandline/Command.h"
#include "apps/plime/terminal/Report.h"
#include "workbench/platform/GpuChoice.h"

#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

/// The options that every command takes, before or after its name.
struct GlobalOptions {
    std::vector<std::string> plugins;       ///< --plugin FILE|FOLDER
    std::vector<std::string> shaderFolders; ///< --shader-dir FOLDER
    GpuChoice gpu;                          ///< --gpu
    int traceLevel = 0;                     ///< --trace; 0 prints nothing
    std::uint64_t memory = 700ULL << 20U;   ///< --memory, in bytes
    bool strictGlsl = false;                ///< --strict-glsl
    bool noClobber = false;                 ///< --no-clobber
    bool quiet = false;                     ///< -q
    bool verbose = false;                   ///< -v
    Colour colour = Colour::Auto;           ///< --color
};

/// What is to be done.
struct Invocation {
    GlobalOptions global;
    Command* command = nullptr; ///< null with `version`, or with `help` for the program as a whole
    bool help = false;          ///< -h, --help
    bool version = false;       ///< --version
};

/// Reads the arguments behind the program's name and fills the targets of the command's syntax. Throws
/// Failure(Usage) that names the argument, with a suggestion for a command or option that is not known.
[[nodiscard]] Invocation parseArguments(std::vector<std::string> arguments, const Commands& commands);

} // namespace workbench
