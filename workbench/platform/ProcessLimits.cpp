// SPDX-License-Identifier: Apache-2.0
#include "workbench/platform/ProcessLimits.h"

#include "workbench/report/Failure.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace workbench {
namespace {

using Resource = decltype(RLIMIT_CORE);

/// A limit of its own stays where it is lower. The hard limit stays, so that the limit can be raised again.
void limit(Resource what, rlim_t most) noexcept {
    rlimit now{};
    ::getrlimit(what, &now);
    now.rlim_cur = std::min(now.rlim_max, most);
    ::setrlimit(what, &now);
}

rlim_t limitOf(Resource what) noexcept {
    rlimit now{};
    ::getrlimit(what, &now);
    return now.rlim_cur;
}

std::uint64_t openFiles() {
    std::error_code error;
    const std::filesystem::directory_iterator list("/proc/self/fd", error);
    return error ? 0 : static_cast<std::uint64_t>(std::distance(begin(list), end(list)));
}

[[noreturn]] void refuse(const std::string& who, std::string expected, std::string got, std::string advice) {
    throw Failure(Fault::Output, {who,
                                  "is not opened, because a limit of this process is too low",
                                  std::move(expected),
                                  std::move(got),
                                  std::move(advice),
                                  {}});
}

} // namespace

std::uint64_t mappedBytes() {
    std::uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

void giveUpRights() noexcept {
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    limit(RLIMIT_CORE, 0);
}

std::uint64_t limitAddresses(std::uint64_t bytes) noexcept {
    if (!AddressesAreLimited) return bytes;
    limit(RLIMIT_AS, bytes);
    return std::min<std::uint64_t>(bytes, limitOf(RLIMIT_AS));
}

void limitProcessorTime(std::chrono::seconds all) noexcept {
    limit(RLIMIT_CPU, static_cast<rlim_t>(all.count()));
}

void limitFiles(std::uint64_t count) noexcept { limit(RLIMIT_NOFILE, count); }

void limitFileSize(std::uint64_t bytes) noexcept { limit(RLIMIT_FSIZE, bytes); }

void closeFilesExcept(std::span<const int> kept) noexcept {
    constexpr unsigned Last = ~0U;
    unsigned first = STDERR_FILENO + 1;
    for (;;) { // the next one that stays
        unsigned next = Last;
        for (const int file : kept)
            if (file >= 0 && static_cast<unsigned>(file) >= first)
                next = std::min(next, static_cast<unsigned>(file));
        if (next > first) ::close_range(first, next == Last ? Last : next - 1, 0);
        if (next == Last) return;
        first = next + 1;
    }
}

std::uint64_t bytesOfThreads() noexcept {
    constexpr std::uint64_t UsualStack = std::uint64_t{8} << 20, Arena = std::uint64_t{64} << 20;
    return std::max(1U, std::thread::hardware_concurrency()) * (UsualStack + Arena);
}

void requireRoomFor(const std::string& who, std::uint64_t bytes, std::uint64_t files) {
    const rlim_t addresses = limitOf(RLIMIT_AS), numbers = limitOf(RLIMIT_NOFILE);
    const std::uint64_t needed = mappedBytes() + bytes;
    if (AddressesAreLimited && addresses != RLIM_INFINITY && addresses < needed)
        refuse(who, "at least " + std::to_string((needed >> 10U) + 1) + " KiB of address space",
               std::to_string(addresses >> 10U) + " KiB",
               "Allow it with: ulimit -v " + std::to_string((needed >> 10U) + 1));
    const std::uint64_t least = openFiles() + files;
    if (numbers != RLIM_INFINITY && numbers < least)
        refuse(who, "at least " + std::to_string(least) + " open files", std::to_string(numbers),
               "Allow it with: ulimit -n " + std::to_string(least));
}

} // namespace workbench
