// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/InputMemory.h"

#include <atomic>

namespace workbench {
namespace {

std::atomic<std::uint64_t> allowed{std::uint64_t{64} << 30}, held{0};

} // namespace

void setInputMemory(std::uint64_t bytes, std::uint64_t beside) noexcept {
    allowed = bytes;
    held = beside;
}
std::uint64_t memoryBesideInput() noexcept { return held; }
std::uint64_t inputMemory() noexcept { return allowed; }

} // namespace workbench
