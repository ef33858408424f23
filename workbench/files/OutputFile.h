// SPDX-License-Identifier: Apache-2.0
// An output file that appears complete or not at all.
#pragma once

#include "workbench/files/Export.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

namespace workbench {

/// Writes to a temporary `.<name>.tmp.<pid>` beside the target and renames it in `finish()`, so that the
/// target is always the old or the new file, complete. Every write, the flush to the disk and the close are
/// checked; on a full disk the failure names the bytes that are needed as far as they are known. An object
/// that is destroyed without `finish()` removes its temporary; that of a process that was killed is removed by
/// the next one that writes the same target. A complete file that cannot take the target's place is kept beside
/// it, and the failure says under which name. Not for use by several threads at once. All errors are
/// Failure(Output).
class KROD_FILES_API OutputFile {
public:
    /// Creates the temporary. Refused: a missing folder, a target that is no regular file, is not writable or may
    /// not be replaced in its folder, and, with `noClobber`, a target that exists. Symbolic links are followed, to
    /// a file that does not exist yet, too. The new file has the rights of an old target, and its owner and group
    /// where the system allows that; what only the old group was allowed, a new one is not. Marks that let a
    /// program run as its owner are not taken over.
    explicit OutputFile(const std::filesystem::path& target, bool noClobber = false);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Appends at the current position. After the first failed write every further call fails alike.
    void write(const void* data, std::size_t size);
    void write(std::string_view text) { write(text.data(), text.size()); }

    /// Moves the position for formats that fill in a table at their end; in bytes from the start.
    void seek(std::uint64_t position);
    [[nodiscard]] std::uint64_t position() const noexcept { return start + buffer.size(); }

    /// Flushes, closes and renames; after it the target is complete on the disk.
    void finish();

    /// Remembers an error (errno) of somebody who wrote into the temporary by its name.
    void setError(int number) noexcept { error = number; }
    /// True after a failed write: for libraries that swallow the exception of a callback.
    [[nodiscard]] bool failed() const noexcept { return error != 0; }
    /// Throws the failure of the first failed write again.
    [[noreturn]] void throwFailure() const;

    [[nodiscard]] const std::filesystem::path& target() const noexcept { return name; }
    [[nodiscard]] const std::filesystem::path& temporary() const noexcept { return temporaryName; }

private:
    void checkTarget(const std::filesystem::path& typed) const;
    void createTemporary();
    [[nodiscard]] bool takeRightsOfTarget() const;
    [[noreturn]] void refuseSecondWriter(const char* what) const;
    void flush();
    void discard() noexcept;
    void closeToDisk();
    void moveIntoPlace();
    [[nodiscard]] std::filesystem::path keepBeside();

    std::filesystem::path name, temporaryName;
    std::vector<std::byte> buffer;
    std::uint64_t start = 0; ///< file position of the first byte of the buffer
    int descriptor = -1;
    int slot = -1;  ///< place in the list for signal handlers
    int error = 0;  ///< errno of the first failed write
    bool noClobber; ///< the target must not exist when the file is finished either
};

/// The file that symbolic links at the end of a path lead to, whether it exists or not. Throws Failure(Output) for
/// links that lead in a circle.
[[nodiscard]] KROD_FILES_API std::filesystem::path linkTarget(const std::filesystem::path& path);

/// Unlinks the temporaries of all unfinished output files of this process. Async-signal-safe, for a signal
/// handler that ends the process afterwards.
KROD_FILES_API void removeTemporaries() noexcept;

} // namespace workbench
