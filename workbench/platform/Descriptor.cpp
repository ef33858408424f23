// SPDX-License-Identifier: Apache-2.0
#include "workbench/platform/Descriptor.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace workbench {
namespace {

[[noreturn]] void fail(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

} // namespace

void Descriptor::close() noexcept {
    if (number >= 0) ::close(std::exchange(number, -1));
}

Pipe::Pipe() {
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0) fail("pipe2");
    read = Descriptor(ends[0]);
    write = Descriptor(ends[1]);
}

Descriptor memoryFile(const char* name, std::span<const char> bytes) {
    Descriptor file(::memfd_create(name, MFD_CLOEXEC));
    if (file.get() < 0) fail("memfd_create");
    while (!bytes.empty()) {
        const ssize_t written = ::write(file.get(), bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) fail("write");
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    ::lseek(file.get(), 0, SEEK_SET);
    return file;
}

} // namespace workbench
