// SPDX-License-Identifier: Apache-2.0
// A folder for one test.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace workbench::test {

/// Exists as long as the object.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "krod-gl-XXXXXX").string();
        if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
        folder = name;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    [[nodiscard]] const std::filesystem::path& path() const { return folder; }
    std::filesystem::path write(const std::string& name, std::string_view text) const {
        const std::filesystem::path file = folder / name;
        std::ofstream(file, std::ios::binary) << text;
        return file;
    }

private:
    std::filesystem::path folder;
};

} // namespace workbench::test
