// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/points/PackedFile.h"

#include "workbench/report/Failure.h"

#include <algorithm>
#include <memory>

#include <zlib.h>

namespace workbench {
namespace {

constexpr std::size_t Step = std::size_t{1} << 20;

struct Close {
    void operator()(gzFile_s* file) const { ::gzclose(file); }
};

/// Reads files that are not packed as they are.
class PackedFile {
public:
    explicit PackedFile(const std::filesystem::path& path) : file(::gzopen(path.c_str(), "rb")) {}

    /// Appends at most that many bytes; false when nothing more can be read.
    bool append(std::string& bytes, std::size_t most) {
        const std::size_t before = bytes.size();
        bytes.resize(before + most);
        const int got = file ? ::gzread(file.get(), bytes.data() + before, static_cast<unsigned>(most)) : -1;
        bytes.resize(before + static_cast<std::size_t>(std::max(got, 0)));
        return got > 0;
    }
    /// True when all that was there has been read, and nothing was wrong with it.
    [[nodiscard]] bool isWhole() {
        int error = Z_ERRNO;
        if (file) static_cast<void>(::gzerror(file.get(), &error));
        return error == Z_OK || error == Z_STREAM_END;
    }

private:
    std::unique_ptr<gzFile_s, Close> file;
};

} // namespace

std::string startOfFile(const std::filesystem::path& path, std::size_t size) {
    std::string start;
    PackedFile(path).append(start, size);
    return start;
}

std::string wholeFile(const std::filesystem::path& path, const MemoryBudget& budget) {
    std::error_code ignored;
    budget.require(path, std::filesystem::file_size(path, ignored));
    PackedFile file(path);
    std::string bytes;
    while (file.append(bytes, Step)) {
        budget.require(path, bytes.size());
        if (bytes.capacity() < bytes.size() + Step) // never more than half of it unused
            bytes.reserve(std::max(bytes.size() + Step, bytes.size() / 2 * 3));
    }
    if (!file.isWhole())
        throw Failure(Fault::Input, {path.string(),
                                     "cannot be read to its end",
                                     "",
                                     std::to_string(bytes.size()) + " bytes",
                                     "The file is damaged or was not written to its end",
                                     {}});
    return bytes;
}

} // namespace workbench
