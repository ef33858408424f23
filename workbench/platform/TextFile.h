// SPDX-License-Identifier: Apache-2.0
// Texts that people hand over in files.
#pragma once

#include <string>

namespace workbench {

/// The whole file, byte for byte; a pipe or a device is refused. Throws Failure(Input) for a file that cannot
/// be read or is larger than 16 MiB.
[[nodiscard]] std::string readTextFile(const std::string& path);

} // namespace workbench
