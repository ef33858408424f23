// SPDX-License-Identifier: Apache-2.0
// The commands of the program.
#pragma once

#include "apps/plime/commandline/Command.h"

#include <memory>

namespace workbench {

/// Every command, in the order in which the help lists them.
[[nodiscard]] Commands makeCommands();

/// The commands, one file each.
[[nodiscard]] std::unique_ptr<Command> makeListCommand();
[[nodiscard]] std::unique_ptr<Command> makeDescribeCommand();
[[nodiscard]] std::unique_ptr<Command> makeShaderCommand();
[[nodiscard]] std::unique_ptr<Command> makeRenderCommand();
[[nodiscard]] std::unique_ptr<Command> makeProcessCommand();
[[nodiscard]] std::unique_ptr<Command> makeRunCommand();
[[nodiscard]] std::unique_ptr<Command> makeInfoCommand();
[[nodiscard]] std::unique_ptr<Command> makeValidateCommand();
[[nodiscard]] std::unique_ptr<Command> makeDoctorCommand();
[[nodiscard]] std::unique_ptr<Command> makeHelpCommand();

} // namespace workbench
