// SPDX-License-Identifier: Apache-2.0
// What reaches standard output, whoever writes it.
#pragma once

#include <functional>
#include <string>

namespace support {

/// Runs a function and gives everything that reached descriptor 1 meanwhile, also through stdio.
[[nodiscard]] std::string outputOf(const std::function<void()>& function);

} // namespace support
