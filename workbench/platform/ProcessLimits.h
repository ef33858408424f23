// SPDX-License-Identifier: Apache-2.0
// What this process may use up: limits that it sets itself, and those that its user has set.
#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

namespace workbench {

/// Sanitizers reserve terabytes of addresses, so that no limit of them makes sense.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool AddressesAreLimited = false;
#elif defined(__has_feature)
inline constexpr bool AddressesAreLimited =
    !(__has_feature(address_sanitizer) || __has_feature(thread_sanitizer));
#else
inline constexpr bool AddressesAreLimited = true;
#endif

/// The address space that this process uses, in bytes.
[[nodiscard]] std::uint64_t mappedBytes();

/// This process and its children gain no rights from programs that they start, and leave no core files.
void giveUpRights() noexcept;
/// Limits this process to `bytes` of address space in all; nothing where addresses are not limited. Returns
/// what holds then, which is less where its user allows less.
std::uint64_t limitAddresses(std::uint64_t bytes) noexcept;
/// Of all its threads since its beginning; then SIGXCPU ends it.
void limitProcessorTime(std::chrono::seconds all) noexcept;
/// Numbers of open files lie below `count`; what is open above stays.
void limitFiles(std::uint64_t count) noexcept;
/// No file that it writes becomes larger.
void limitFileSize(std::uint64_t bytes) noexcept;
/// Closes all files from number 3 on, but for those.
void closeFilesExcept(std::span<const int> kept) noexcept;

/// The address space for the threads of a library that starts one for each processor: their stacks, and what they
/// reserve to allocate from.
[[nodiscard]] std::uint64_t bytesOfThreads() noexcept;
/// Throws Failure(Output) where the limits of the user leave this process fewer bytes of address space or files
/// than `who` is going to need beside what is in use: libraries end the process where they find that out.
void requireRoomFor(const std::string& who, std::uint64_t bytes, std::uint64_t files);

} // namespace workbench
