// SPDX-License-Identifier: Apache-2.0
// Reading a library file before it is loaded.
#include "Target.h"

#include "workbench/platform/ElfFile.h"

#include <algorithm>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

namespace {

/// A file in memory, which the reader can open by name.
class MemoryFile {
public:
    MemoryFile(const std::uint8_t* data, std::size_t size) : number(::memfd_create("input", MFD_CLOEXEC)) {
        fuzz::require(number >= 0, "a file in memory can be made");
        while (size > 0) {
            const ssize_t written = ::write(number, data, size);
            fuzz::require(written > 0, "it can be written");
            data += written;
            size -= static_cast<std::size_t>(written);
        }
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { ::close(number); }

    [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(number); }

private:
    int number;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const MemoryFile input(data, size);
    const auto file = workbench::ElfFile::inspect(input.path());
    const auto& names = file.exportedNames;
    fuzz::require(std::is_sorted(names.begin(), names.end()), "names are sorted");
    fuzz::require(std::includes(names.begin(), names.end(), file.uniqueNames.begin(), file.uniqueNames.end()),
                  "what keeps the library loaded is exported");
    if (file.usable()) return 0;
    fuzz::require(names.empty(), "a library that is refused has no names");
    fuzz::require(fuzz::isOneLine(file.refusal.sentence()), "the refusal is one line");
    return 0;
}
