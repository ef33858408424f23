// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/MemoryBudget.h"

#include "workbench/report/Failure.h"

#include <string>

namespace workbench {
namespace {

constexpr std::uint64_t Megabyte = 1U << 20U;

std::string roundedUp(std::uint64_t bytes) { return std::to_string(bytes / Megabyte + 1) + 'M'; }

} // namespace

void MemoryBudget::require(const std::filesystem::path& path, std::uint64_t needed) const {
    if (needed > left()) refuse(path, needed);
}

void MemoryBudget::refuse(const std::filesystem::path& path, std::uint64_t needed) const {
    const std::string wanted = roundedUp(held + needed);
    throw Failure(Fault::Output, {path.string(),
                                  "needs more memory than is allowed",
                                  "at most " + std::to_string(allowed / Megabyte) + 'M',
                                  wanted,
                                  "Allow it with --memory " + wanted,
                                  {}});
}

} // namespace workbench
