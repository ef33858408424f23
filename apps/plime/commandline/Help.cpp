// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/commandline/Help.h"

#include "apps/plime/terminal/Text.h"
#include "host/core/VInitialization.h"

namespace workbench {
namespace {

constexpr std::string_view Head =
    R"(plime runs image post-processing modules for Krod without Krod: it loads the
plug-ins, shows what is in them, and works on models and pictures.

Usage: plime COMMAND [ARGUMENT…]

Commands:
)";

constexpr std::string_view Tail = R"(
Subjects of "plime help": environment, networks, points, shaders.

Options of all commands, before or after the command:
  --plugin FILE|FOLDER   load this plug-in, or all of a folder; may be repeated
  --gpu WHICH            auto, software, a number or a part of a device's name
  --memory SIZE          memory for big pictures, such as 700M (default) or 2G
  --shader-dir FOLDER    look here for shader files of your own; may be repeated
  --strict-glsl          hand shader texts to the driver as they are
  --no-clobber           never replace a file that is there
  --trace LEVEL          print what modules trace up to this level, such as 100
  -q, --quiet            errors only
  -v, --verbose          say more, and show what modules print
  --color WHEN           colour messages: auto (default), always or never
  -h, --help             help for a command
  --version              version of the program and of the host interface

Exit codes: 0 done, 1 some of the work failed, 2 wrong command line, 3 input,
4 output, disk or memory, 5 plug-in, 6 shader, 7 OpenGL, 8 network,
130 interrupted.

Examples:
  plime list                       the modules, each with its key
  plime describe Display/CMYK      the parameters of one
  plime help Hollywood/PixelBlur   what it does, at length
  plime doctor                     does everything work on this machine?
)";

constexpr std::size_t NameColumns = 10;

} // namespace

std::string programHelp(const Commands& commands) {
    std::string text(Head);
    for (const auto& command : commands)
        text += "  " + padded(command->name(), NameColumns) + "  " + std::string(command->purpose()) + '\n';
    return text += Tail;
}

std::string versionText() {
    return std::string("plime " PLIME_VERSION " (host interface ") + krod::VInitialization::hostDate() +
           ")\n";
}

} // namespace workbench
