// SPDX-License-Identifier: Apache-2.0
// The help of the program as a whole.
#pragma once

#include "apps/plime/commandline/Command.h"

#include <string>

namespace workbench {

/// What the program is for, its commands, the options that all of them take, and where to go on.
[[nodiscard]] std::string programHelp(const Commands& commands);

/// "plime 0.1.0 (host interface 2022_Feb_15)" and a line end.
[[nodiscard]] std::string versionText();

} // namespace workbench
