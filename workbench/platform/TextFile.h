// SPDX-License-Identifier: Apache-2.0
// Texts that people hand over in files.
#pragma once

#include <string>
#include <string_view>

namespace workbench {

/// What some editors put in front of a text in UTF-8.
inline constexpr std::string_view ByteOrderMark = "\xef\xbb\xbf";

/// The whole file, byte for byte, but for a byte order mark; a pipe or a device is refused. Throws Failure(Input) for a file that cannot
/// be read or is larger than 16 MiB.
[[nodiscard]] std::string readTextFile(const std::string& path);

} // namespace workbench
