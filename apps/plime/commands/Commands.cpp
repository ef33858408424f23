// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/commands/Commands.h"

namespace workbench {

Commands makeCommands() {
    Commands commands;
    commands.push_back(makeListCommand());
    commands.push_back(makeDescribeCommand());
    commands.push_back(makeShaderCommand());
    commands.push_back(makeRenderCommand());
    commands.push_back(makeProcessCommand());
    commands.push_back(makeRunCommand());
    commands.push_back(makeInfoCommand());
    commands.push_back(makeValidateCommand());
    commands.push_back(makeDoctorCommand());
    commands.push_back(makeHelpCommand());
    return commands;
}

} // namespace workbench
