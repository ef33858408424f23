// SPDX-License-Identifier: Apache-2.0
// Room for files.
#pragma once

#include <filesystem>
#include <string>

namespace bench {

/// A folder of its own in the temporary folder, removed with all it holds.
class Folder {
public:
    /// Throws std::filesystem::filesystem_error.
    Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder();

    [[nodiscard]] std::string file(const std::string& name) const { return path / name; }

private:
    std::filesystem::path path;
};

} // namespace bench
