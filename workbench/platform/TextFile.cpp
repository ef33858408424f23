// SPDX-License-Identifier: Apache-2.0
#include "workbench/platform/TextFile.h"

#include "workbench/platform/Descriptor.h"
#include "workbench/report/Failure.h"

#include <array>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace workbench {
namespace {

constexpr std::size_t LargestFile = std::size_t{16} << 20U;

[[noreturn]] void fail(const std::string& path, const std::string& got) {
    throw Failure(Fault::Input, {path, "cannot be read", "a text file of at most 16 MiB", got, "", {}});
}

} // namespace

std::string readTextFile(const std::string& path) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (file.get() < 0) fail(path, std::generic_category().message(errno));
    struct stat about {};
    if (::fstat(file.get(), &about) != 0 || !S_ISREG(about.st_mode))
        fail(path, "something that is no regular file");
    std::string text;
    std::array<char, 65536> buffer;
    while (true) {
        const ssize_t count = ::read(file.get(), buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) fail(path, std::generic_category().message(errno));
        if (count == 0) return text.starts_with(ByteOrderMark) ? text.substr(ByteOrderMark.size()) : text;
        text.append(buffer.data(), static_cast<std::size_t>(count));
        if (text.size() > LargestFile) fail(path, "a larger one");
    }
}

} // namespace workbench
