// SPDX-License-Identifier: Apache-2.0
// Numbers of the command line.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace workbench {

/// A whole number from `least` to `most`. Throws Failure(Usage) that names the option.
[[nodiscard]] int wholeNumber(const std::string& option, std::string_view text, int least, int most);

/// A size in bytes: digits, then nothing, K, M or G for powers of 1024 ("700M"). At least one byte.
/// Throws Failure(Usage) that names the option.
[[nodiscard]] std::uint64_t byteSize(const std::string& option, std::string_view text);

} // namespace workbench
