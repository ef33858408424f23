// SPDX-License-Identifier: Apache-2.0
// Whether there is room on the disk.
#pragma once

#include <cstdint>
#include <filesystem>

namespace workbench {

/// Throws Failure(Output), which names the bytes that are needed and those that are there, when the file system
/// that `output` lies in has not as many free for this user: for the picture, and for finished tiles that lie
/// beside it until it is complete. A file system that does not tell is trusted.
void requireFreeSpace(const std::filesystem::path& output, std::uint64_t picture, std::uint64_t tiles);

} // namespace workbench
