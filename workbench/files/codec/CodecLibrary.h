// SPDX-License-Identifier: Apache-2.0
// Codec libraries that are opened on first use.
#pragma once

#include <cstdint>
#include <string>

namespace workbench {

/// Opens the codec library `file` and returns its function `function`. Searched are the folders of the
/// environment variable KROD_CODEC_PATH (separated by colons) where it is set; else the folder of this
/// library and `krod`,
/// `../lib` and `../lib/krod` beside it. A library that is missing or cannot be opened is Failure(Input),
/// which names `package` as what it needs; limits of this process that leave it fewer bytes of address space than
/// `addresses` are Failure(Output). Opened libraries stay open.
[[nodiscard]] void* codecFunction(const std::string& file, const char* function, const std::string& package,
                                  std::uint64_t addresses);

} // namespace workbench
