// SPDX-License-Identifier: Apache-2.0
// A small file with the names of the libraries that have passed their trial.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace workbench {

/// What is remembered from one start of a program to the next. It only saves time: a file that is missing,
/// damaged, unwritable, too large, of another owner, or writable by others counts as empty, and nothing here
/// ever fails for it.
class TrialMemory {
public:
    /// A line of the file: what the system knows of the library's file, the mark of who has tried it, and the
    /// path. Empty for a file that cannot be remembered.
    using Key = std::string;

    /// `file` may be empty: then nothing is remembered. Another `prober`, or another build of this host,
    /// makes all keys others.
    TrialMemory(std::filesystem::path file, const std::filesystem::path& prober);

    /// The key of the library that lies at this path now.
    [[nodiscard]] Key keyOf(const std::string& path) const;
    [[nodiscard]] bool knows(const Key& key);
    /// Writes the file anew, in one step, with this key and the newest of the others. Keys of the same path
    /// are forgotten.
    void keep(const Key& key);

private:
    [[nodiscard]] std::vector<Key> read() const;
    void write(const std::vector<Key>& keys) const;

    std::filesystem::path file;
    std::string mark;
    std::optional<std::vector<Key>> known; ///< as read when it was first asked for
};

} // namespace workbench
