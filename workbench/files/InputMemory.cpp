// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/InputMemory.h"

#include <atomic>

namespace workbench {
namespace {

std::atomic<std::uint64_t> allowed{std::uint64_t{64} << 30};

} // namespace

void setInputMemory(std::uint64_t bytes) noexcept { allowed = bytes; }
std::uint64_t inputMemory() noexcept { return allowed; }

} // namespace workbench
